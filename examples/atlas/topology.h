/* SPDX-License-Identifier: MIT */
/* A TopoJSON topology as records in lists.

   TopoJSON stores every stretch of coast or border once, as an arc, and builds polygons from references to arcs.
   Two neighbours share the arc between them; one of them runs along it backwards.

       Topology
         countries -> Country -> Country -> ...
                        polygons -> Polygon -> ...    (an island each)
                        |             Ring -> ...     (the shore, then the holes)
                        |               Stretch -> Stretch -> ...
                        lines -> Line -> ...  |          |
         arcs  ->  Arc  ->  Arc  ->  Arc  ->  ...      |          |
                    ^        ^------------------------ | ---------+
                    +----------------------------------+

   These are pointer lists, which own what they hold; the stretches alone are elements. A stretch only points to its
   arc: the topology owns the arcs. The points of an arc lie in a block array.

   Coordinates are integers from the moment they are decoded, so that the same file gives the same map everywhere,
   whatever a platform's floating point does. */
#ifndef ATLAS_TOPOLOGY_H
#define ATLAS_TOPOLOGY_H

#include <vector>

#include <mova/cxx/element_list.h>
#include <mova/cxx/pointer_list.h>

#include "globe.h"
#include "messages.h"

namespace atlas {

enum class ArcUse : std::uint8_t { none, coast, border };

/* A stretch of coast or border, of two points or more. */
struct Arc {
    Points points;
    ArcUse use = ArcUse::none;
};

/* One run along an arc. */
struct Stretch {
    Arc *arc;
    bool reversed;

    Point start() const { return reversed ? arc->points.back() : arc->points.front(); }
    Point end() const { return reversed ? arc->points.front() : arc->points.back(); }
};

/* Stretches, each of which starts where the one before it ends; the last one of a ring ends where its first starts. */
using Line = mova::element_list<Stretch>;
using Ring = mova::element_ring<Stretch>;

template <class Record>
using Owned = mova::pointer_list<Record, std::default_delete<Record>>;

/* The shore, then the holes. */
using Polygon = Owned<Ring>;

/* A geometry that has outlines: a country, where the file is a map of countries. */
struct Country {
    std::string name; /* empty where the file has none */
    Owned<Polygon> polygons;
    Owned<Line> lines;
};

struct Topology {
    Owned<Arc> arcs;
    Owned<Country> countries;
    std::vector<std::string> warnings; /* what is odd about the file, though it can be drawn */
};

/* Calls `visit` with each ring of the country's polygons. */
template <class Visit>
void for_each_ring(const Country &country, Visit visit)
{
    for (const Polygon *polygon : country.polygons) {
        for (const Ring *ring : *polygon)
            visit(*ring);
    }
}

/* Calls `visit` with each stretch of the country's rings and lines. */
template <class Visit>
void for_each_stretch(const Country &country, Visit visit)
{
    for_each_ring(country, [&](const Ring &ring) { std::ranges::for_each(ring, visit); });
    for (const Line *line : country.lines)
        std::ranges::for_each(*line, visit);
}

/* How many points all rings may have together, each with all of its own: so many times those of the arcs, and no more
   than so many. All lines together may have as many; in a small file they have room for so many all the same. */
constexpr std::size_t most_runs = 32;
constexpr std::size_t most_outline_points = std::size_t{1} << 24;
constexpr std::size_t room_for_lines = std::size_t{1} << 16;

/* Decodes the text of a TopoJSON file: of its object `countries` where there is one, otherwise of all its objects.
   Points and null geometries have no outlines and are skipped. Throws Error where the text is damaged, is not a
   topology, lies outside the globe, has no outlines at all, or has outlines of too many points. */
Topology decode_topology(std::string_view text, const Progress &progress);

struct Totals {
    std::size_t countries, rings, lines;
    std::size_t points; /* of all arcs that an outline uses, each counted once */
};

Totals totals(const Topology &topology);

} // namespace atlas

#endif
