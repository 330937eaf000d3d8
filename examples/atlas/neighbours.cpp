/* SPDX-License-Identifier: MIT */
#include "neighbours.h"

#include <mova/cxx/hash_table.h>

namespace atlas {

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

} // namespace atlas
