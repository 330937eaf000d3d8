/* SPDX-License-Identifier: MIT */
/* A TopoJSON topology as records in lists.

   TopoJSON stores every stretch of coast or border once, as an arc, and builds polygons from references to arcs.
   Two neighbours share the arc between them; one of them runs along it backwards.

       Topology
         countries -> Country -> Country -> ...
                        polygons -> Polygon -> ...         (an island each)
                        |             rings -> Path -> ... (the shore, then the holes)
                        |                        stretches -> Stretch -> Stretch -> ...
                        lines -> Path -> ...                   |            |
         arcs  ->  Arc  ->  Arc  ->  Arc  ->  ...              |            |
                    ^        ^-------------------------------- | -----------+
                    +------------------------------------------+

   These are pointer lists, which own what they hold; the stretches alone are elements, in lists that a ring closes.
   A stretch only points to its arc: the topology owns the arcs. The points of an arc lie in a block array.

   Coordinates are integers from the moment they are decoded, so that the same file gives the same map everywhere,
   whatever a platform's floating point does. */
#ifndef ATLAS_TOPOLOGY_H
#define ATLAS_TOPOLOGY_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <mova/lists/element_list.h>

#include "owning_list.h"
#include "points.h"
#include "progress.h"
#include "text.h"

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

    Point start() const { return reversed ? arc->points.last() : arc->points.first(); }
    Point end() const { return reversed ? arc->points.first() : arc->points.last(); }
};

/* Stretches, each of which starts where the one before it ends. A ring's list is closed: its last one ends where its
   first starts. */
class Path {
public:
    Path() = default;
    ~Path() { EL_release(&stretches_); }
    Path(const Path &) = delete;
    Path &operator=(const Path &) = delete;

    EL_list *stretches() const { return stretches_; }

private:
    EL_list *stretches_ = EL_create(sizeof(Stretch));
};

struct Polygon {
    OwningList<Path> rings;
};

/* A geometry that has outlines: a country, where the file is a map of countries. */
struct Country {
    Text name; /* empty where the file has none */
    OwningList<Polygon> polygons;
    OwningList<Path> lines;
};

struct Topology {
    OwningList<Arc> arcs;
    OwningList<Country> countries;
    std::vector<std::string> warnings; /* what is odd about the file, though it can be drawn */
};

/* Calls `visit` with each stretch of the path. */
template <class Visit>
void for_each_stretch(const Path &path, Visit visit)
{
    EL_iterator stretches = EL_all_items(path.stretches());
    for (void *stretch; EL_next_item(&stretches, &stretch);)
        visit(*static_cast<const Stretch *>(stretch));
}

template <class Visit>
void for_each_ring(const Polygon &polygon, Visit visit)
{
    GL_iterator rings = GL_all_items(polygon.rings.get());
    while (const Path *ring = next_record<Path>(rings))
        visit(*ring);
}

/* Calls `visit` with each ring of the country's polygons. */
template <class Visit>
void for_each_ring(const Country &country, Visit visit)
{
    GL_iterator polygons = GL_all_items(country.polygons.get());
    while (const Polygon *polygon = next_record<Polygon>(polygons))
        for_each_ring(*polygon, visit);
}

/* Calls `visit` with each stretch of the country's rings and lines. */
template <class Visit>
void for_each_stretch(const Country &country, Visit visit)
{
    for_each_ring(country, [&](const Path &ring) { for_each_stretch(ring, visit); });
    GL_iterator lines = GL_all_items(country.lines.get());
    while (const Path *line = next_record<Path>(lines))
        for_each_stretch(*line, visit);
}

/* How many points all rings may have together, each with all of its own: so many times those of the arcs, and no more
   than so many. All lines together may have as many; in a small file they have room for so many all the same. */
constexpr std::size_t most_runs = 32;
constexpr std::size_t most_outline_points = std::size_t{1} << 24;
constexpr std::size_t room_for_lines = std::size_t{1} << 16;

/* Decodes the text of a TopoJSON file: of its object `countries` where there is one, otherwise of all its objects.
   Points and null geometries have no outlines and are skipped. Throws Error where the text is damaged, is not a
   topology, lies outside the globe, has no outlines at all, or has rings of too
   many points. */
Topology decode_topology(std::string_view text, const Progress &progress);

/* Tests for a list of arcs: whether several countries share the arc, or just one uses it. An arc that only objects
   left out use is neither. */
int is_border(void *arc);
int is_coast(void *arc);

struct Totals {
    std::int64_t countries, rings, lines;
    std::int64_t points; /* of all arcs that an outline uses, each counted once */
};

Totals totals(const Topology &topology);

} // namespace atlas

#endif
