/* SPDX-License-Identifier: MIT */
#include "borders.h"

#include "arc_table.h"

namespace atlas {

static mova_word word(const Country *country)
{
    return reinterpret_cast<mova_word>(country);
}

void find_borders(const Topology &topology)
{
    ArcTable seen(topology); /* the first country along each arc */
    GL_iterator arcs = GL_all_items(topology.arcs.get());
    while (Arc *arc = next_record<Arc>(arcs))
        arc->use = ArcUse::none;
    GL_iterator countries = GL_all_items(topology.countries.get());
    while (const Country *country = next_record<Country>(countries)) {
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
