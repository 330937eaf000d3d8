/* SPDX-License-Identifier: MIT */
#include "colours.h"

#include <mova/cxx/hash_table.h>

namespace atlas {

/* ---- neighbours ---- */

void find_borders(Topology &topology)
{
    mova::hash_table<const Arc *, const Country *> seen(topology.arcs.size()); /* the first country along each arc */
    for (Arc *arc : topology.arcs)
        arc->use = ArcUse::none;
    for (const Country *country : topology.countries) {
        for_each_stretch(*country, [&](const Stretch &stretch) {
            const Country *first = seen.get_or(stretch.arc);
            if (!first) {
                seen.set(stretch.arc, country);
                stretch.arc->use = ArcUse::coast;
            } else if (first != country) {
                stretch.arc->use = ArcUse::border;
            }
        });
    }
}

/* The usual tints take turns as the first choice; the others are for countries whose neighbours leave none of them. */
constexpr int usual_tints = 4;

static int choose_tint(unsigned taken, int turn)
{
    for (int i = 0; i < tint_count; ++i) {
        const int tint = i < usual_tints ? (turn + i) % usual_tints : i;
        if (!(taken >> tint & 1))
            return tint;
    }
    return turn;
}

Tints choose_tints(const Topology &topology)
{
    Tints tints;
    mova::hash_table<const Arc *, unsigned> taken(topology.arcs.size()); /* bit n: a country of tint n runs along it */
    int turn = 0;
    for (const Country *country : topology.countries) {
        unsigned around = 0;
        for_each_stretch(*country, [&](const Stretch &stretch) { around |= taken.get_or(stretch.arc); });
        const int tint = choose_tint(around, turn);
        for_each_stretch(
            *country, [&](const Stretch &stretch) { taken.set(stretch.arc, taken.get_or(stretch.arc) | 1u << tint); });
        tints.add(country, tint);
        turn = (turn + 1) % usual_tints;
    }
    return tints;
}

/* ---- inks ---- */

static std::uint8_t coloured(std::int32_t index, mova::colour colour)
{
    mova::colour_table::set(index, colour);
    return static_cast<std::uint8_t>(index);
}

/* Standard indices may have any colour. New indices come after the standard ones, and are never given back. */
static Inks make_inks()
{
    mova::colour_table::make();
    const auto land = [](mova::colour colour) {
        return static_cast<std::uint8_t>(mova::dynamic_colour(colour).release());
    };
    return {coloured(GE_DRKBLU, {14, 36, 56}),
            coloured(GE_BLUE, {29, 56, 80}),
            coloured(GE_DRKCYAN, {52, 86, 114}),
            coloured(GE_GRAY144, {146, 156, 146}),
            coloured(GE_LGRAY, {244, 225, 178}),
            coloured(GE_WHITE, {250, 246, 232}),
            {land({92, 122, 84}), land({140, 132, 86}), land({110, 98, 74}), land({150, 110, 84}), land({74, 108, 104}),
             land({122, 100, 114})}};
}

const Inks &inks()
{
    static const Inks made = make_inks();
    return made;
}

std::vector<mova::colour> palette()
{
    std::vector<mova::colour> colours;
    for (std::int32_t index = 0; index <= inks().land.back(); ++index)
        colours.push_back(mova::colour_table::get(index));
    return colours;
}

} // namespace atlas
