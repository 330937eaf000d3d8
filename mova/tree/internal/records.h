/* SPDX-License-Identifier: MIT */
/* The tree's records: each kind is counted in the module's record while it lives. */
#ifndef MOVA_TREE_INTERNAL_RECORDS_H
#define MOVA_TREE_INTERNAL_RECORDS_H

#include <type_traits>

#include <mova/frame/host.h>
#include <mova/frame/internal/module_records.h>
#include <mova/tree/balanced_tree.h>

namespace mova::gt {

/* How many records of this kind are live. */
template <class Record>
int32_t &live_count()
{
    if constexpr (std::is_same_v<Record, tree>)
        return modules.gentree.live_trees;
    else if constexpr (std::is_same_v<Record, tree_item>)
        return modules.gentree.live_nodes;
    else
        return modules.gentree.live_iterators;
}

/* Returns a new record. Its fields are not set. */
template <class Record>
Record *allocate_record()
{
    Record *const record = static_cast<Record *>(MM_alloc_item(sizeof(Record)));
    ++live_count<Record>();
    return record;
}

template <class Record>
void free_record(Record *record)
{
    MM_dealloc_item(record, sizeof(Record));
    --live_count<Record>();
}

/* Returns a node that holds `item` and is in no tree. */
inline tree_item *allocate_node(void *item)
{
    tree_item *const node = allocate_record<tree_item>();
    *node = {.item = item, .left = nullptr, .right = nullptr, .prev = nullptr, .next = nullptr, .balance = 0};
    return node;
}

/* Every error of the family is a broken precondition. */
inline void raise_broken_precondition(int32_t line)
{
    raise(modules.gentree, line, MOVA_PRECONDITION_BROKEN);
}

} // namespace mova::gt

#endif
