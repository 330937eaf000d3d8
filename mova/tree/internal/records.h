/* The tree's records: each kind is counted in the module's record. The contents of a new one are not set. */
#ifndef MOVA_TREE_INTERNAL_RECORDS_H
#define MOVA_TREE_INTERNAL_RECORDS_H

#include <mova/frame/host.h>
#include <mova/frame/internal/module_records.h>
#include <mova/tree/balanced_tree.h>

namespace mova::gt {

template <class Record>
Record *counted_alloc(int32_t &live)
{
    Record *record = static_cast<Record *>(MM_alloc_item(sizeof(Record)));
    ++live;
    return record;
}

template <class Record>
void counted_free(Record *record, int32_t &live)
{
    MM_dealloc_item(record, sizeof(Record));
    --live;
}

inline tree *gt_alloc_tree()
{
    return counted_alloc<tree>(modules.gentree.live_trees);
}

inline void gt_free_tree(tree *t)
{
    counted_free(t, modules.gentree.live_trees);
}

inline tree_item *gt_alloc_tree_item()
{
    return counted_alloc<tree_item>(modules.gentree.live_nodes);
}

inline void gt_free_tree_item(tree_item *node)
{
    counted_free(node, modules.gentree.live_nodes);
}

inline tree_iter *gt_alloc_tree_iter()
{
    return counted_alloc<tree_iter>(modules.gentree.live_iterators);
}

inline void gt_free_tree_iter(tree_iter *iterator)
{
    counted_free(iterator, modules.gentree.live_iterators);
}

/* Every error of the family is a broken precondition. */
inline void raise_broken_precondition(int32_t line)
{
    raise(modules.gentree, line, MOVA_PRECONDITION_BROKEN);
}

} // namespace mova::gt

#endif
