/* SPDX-License-Identifier: MIT */
/* A hash table from arcs to words. */
#ifndef ATLAS_ARC_TABLE_H
#define ATLAS_ARC_TABLE_H

#include <bit>
#include <cstddef>

#include <mova/hash/hash_table.h>

#include "topology.h"

namespace atlas {

class ArcTable {
public:
    /* With room for every arc: a table grows beyond seven eighths. */
    explicit ArcTable(const Topology &topology)
        : table_(HSH_create(static_cast<std::uint32_t>(topology.arcs.size()) / 7 * 8 + 8, shift))
    {
    }
    ~ArcTable() { HSH_release(&table_); }
    ArcTable(const ArcTable &) = delete;
    ArcTable &operator=(const ArcTable &) = delete;

    /* The word of an arc is 0 until it is set. */
    mova_word get(const Arc *arc) const { return HSH_get_value(table_, reinterpret_cast<mova_word>(arc)); }
    void set(const Arc *arc, mova_word word) { HSH_set_value(table_, reinterpret_cast<mova_word>(arc), word); }

private:
    /* Every arc is a block of its own, and so many low bits are the same in all addresses of blocks. */
    static constexpr int shift = std::countr_zero(alignof(std::max_align_t));

    HSH_table *table_;
};

} // namespace atlas

#endif
