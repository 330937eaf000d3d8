#include "tints.h"

#include <unordered_map>

namespace atlas {

/* Bit n: a country of tint n runs along the arc. */
using Taken = std::unordered_map<const Arc *, unsigned>;

template <class Visit>
static void for_each_arc(const Country &country, Visit visit)
{
    GL_iterator polygons = GL_all_items(country.polygons.get());
    while (const Polygon *polygon = next_record<Polygon>(polygons)) {
        GL_iterator rings = GL_all_items(polygon->rings.get());
        while (const Path *ring = next_record<Path>(rings)) {
            GL_iterator stretches = GL_all_items(ring->stretches.get());
            while (const Stretch *stretch = next_record<Stretch>(stretches))
                visit(stretch->arc);
        }
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

std::vector<std::uint8_t> choose_tints(const Topology &topology)
{
    Taken taken;
    std::vector<std::uint8_t> tints;
    GL_iterator countries = GL_all_items(topology.countries.get());
    while (const Country *country = next_record<Country>(countries)) {
        unsigned around = 0;
        for_each_arc(*country, [&](const Arc *arc) { around |= taken[arc]; });
        const int tint = choose_tint(around, static_cast<int>(tints.size() % usual_tints));
        for_each_arc(*country, [&](const Arc *arc) { taken[arc] |= 1u << tint; });
        tints.push_back(static_cast<std::uint8_t>(tint));
    }
    return tints;
}

} // namespace atlas
