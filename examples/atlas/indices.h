/* SPDX-License-Identifier: MIT */
/* The countries of a topology in trees: by name, and by area. */
#ifndef ATLAS_INDICES_H
#define ATLAS_INDICES_H

#include <cstdint>
#include <string_view>
#include <vector>

#include <mova/tree/balanced_tree.h>

#include "topology.h"

namespace atlas {

/* A tree of countries, in alphabetical order of the bytes of their names. Several may have the same name: those stand in
   the topology's order. Countries without a name are left out. */
class NameIndex {
public:
    explicit NameIndex(const Topology &topology);
    ~NameIndex() { GT_release(&tree_); }
    NameIndex(const NameIndex &) = delete;
    NameIndex &operator=(const NameIndex &) = delete;

    std::vector<const Country *> find(std::string_view name) const;

private:
    tree *tree_;
};

/* What there is to say about a country. */
struct Summary {
    const Country *country;
    std::int32_t number;    /* in the topology's order */
    std::int64_t area;      /* in square kilometres */
    const Polygon *largest; /* of its polygons; null where it has none */
};

/* Returns a negative number where `a` goes before `b`: in order of falling areas, and for equal areas in the topology's
   order. So no two summaries of a topology compare equal. */
std::int32_t compare_areas(const Summary &a, const Summary &b);

/* A tree of summaries in this order. */
class AreaIndex {
public:
    explicit AreaIndex(const Topology &topology);
    ~AreaIndex() { GT_total_release(&tree_, sizeof(Summary)); }
    AreaIndex(const AreaIndex &) = delete;
    AreaIndex &operator=(const AreaIndex &) = delete;

    tree *get() const { return tree_; }

    /* Writes the tree to the debug output, with the names and the areas. */
    void print() const;

private:
    tree *tree_;
};

} // namespace atlas

#endif
