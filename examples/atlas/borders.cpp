/* SPDX-License-Identifier: MIT */
#include "borders.h"

#include "arc_table.h"

namespace atlas {

static mova_word word(const Country *country)
{
    return reinterpret_cast<mova_word>(country);
}

void find_borders(Topology &topology)
{
    ArcTable seen(topology); /* the first country along each arc */
    for (Arc *arc : topology.arcs)
        arc->use = ArcUse::none;
    for (const Country *country : topology.countries) {
        for_each_stretch(*country, [&](const Stretch &stretch) {
            const mova_word first = seen.get(stretch.arc);
            if (!first) {
                seen.set(stretch.arc, word(country));
                stretch.arc->use = ArcUse::coast;
            } else if (first != word(country)) {
                stretch.arc->use = ArcUse::border;
            }
        });
    }
}

} // namespace atlas
