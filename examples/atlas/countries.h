/* SPDX-License-Identifier: MIT */
/* The countries of a topology in trees, by name and by area, and which of them to draw. */
#ifndef ATLAS_COUNTRIES_H
#define ATLAS_COUNTRIES_H

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <mova/cxx/balanced_tree.h>

#include "topology.h"

namespace atlas {

/* In alphabetical order of the bytes of their names. Several may have the same name: those stand in the topology's order. */
struct ByName {
    auto operator()(const Country &a, const Country &b) const { return a.name <=> b.name; }
    auto operator()(std::string_view name, const Country &b) const { return name <=> b.name; }
};
using NameIndex = mova::balanced_multiset<const Country, ByName>;

/* Countries without a name are left out. The index does not own them. */
NameIndex index_by_name(const Topology &topology);

/* Removes all countries but those of these names; where several have the same name, they all stay. Throws Error where
   no country has one of the names. */
void select_countries(Topology &topology, const std::vector<std::string> &names);

/* What there is to say about a country. */
struct Summary {
    const Country *country;
    std::int32_t number;    /* in the topology's order */
    std::int64_t area;      /* in square kilometres */
    const Polygon *largest; /* of its polygons; null where it has none */
};

/* In order of falling areas, and for equal areas in the topology's order. So no two summaries of a topology compare
   equal. */
struct ByArea {
    auto operator()(const Summary &a, const Summary &b) const
    {
        const std::strong_ordering order = b.area <=> a.area;
        return order != 0 ? order : a.number <=> b.number;
    }
};
using AreaIndex = mova::balanced_set<Summary, ByArea, mova::host_delete>;

AreaIndex index_by_area(const Topology &topology);

/* Writes the tree to the debug output, with the names and the areas. */
void print(const AreaIndex &index);

} // namespace atlas

#endif
