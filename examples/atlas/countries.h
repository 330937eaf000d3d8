/* SPDX-License-Identifier: MIT */
/* The countries of a topology in trees, by name and by area, and which of them to draw. */
#ifndef ATLAS_COUNTRIES_H
#define ATLAS_COUNTRIES_H

#include <compare>

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
   no country has one of the names. Returns how many countries it came to by their names: each once. */
std::size_t select_countries(Topology &topology, const std::vector<std::string> &names);

/* Which of two countries comes first: the larger one, or the one that the topology has first. So no two of them are equal. */
struct Rank {
    std::int64_t area;   /* in square kilometres */
    std::int32_t number; /* in the topology's order */
};
struct ByRank {
    template <class Ranked>
    auto operator()(const Ranked &a, const Ranked &b) const
    {
        const std::strong_ordering order = b.rank.area <=> a.rank.area;
        return order != 0 ? order : a.rank.number <=> b.rank.number;
    }
};

/* What there is to say about a country. */
struct Summary {
    Rank rank;
    const Country *country;
    const Polygon *largest; /* of its polygons; null where it has none */
};
using AreaIndex = mova::balanced_set<Summary, ByRank, mova::host_delete>;

AreaIndex index_by_area(const Topology &topology);

/* Writes the tree to the debug output, with the names and the areas. */
void print(const AreaIndex &index);

} // namespace atlas

#endif
