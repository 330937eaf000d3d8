/* SPDX-License-Identifier: MIT */
#include <mova/tree/balanced_tree.h>

#include <mova/frame/internal/assert.h>
#include <mova/frame/internal/undo.h>
#include <mova/tree/internal/iterators.h>
#include <mova/tree/internal/prefetch.h>
#include <mova/tree/internal/records.h>

using namespace mova::gt;

namespace {

/* The values of an iterator's `mode`. */
enum delivery : int32_t { every_item = 0, accepted_items = 1, while_accepted = 2 };

/* Returns a new iterator that is not yet in the tree's list, with its `condition` still unset. */
tree_iter *allocate_iterator(tree *t, tree_item *cursor, delivery mode)
{
    tree_iter *const iterator = allocate_record<tree_iter>();
    iterator->cursor = cursor;
    iterator->current = nullptr;
    iterator->tree = t;
    iterator->mode = mode;
    return iterator;
}

tree_iter *enter(tree_iter *iterator)
{
    mova::or_undo([iterator] { GL_append_after_last(iterator->tree->iterators, iterator); },
                  [iterator] { free_record(iterator); });
    return iterator;
}

tree_iter *create_iterator(tree *t, tree_item *cursor, delivery mode, GT_condition condition)
{
    tree_iter *const iterator = allocate_iterator(t, cursor, mode);
    iterator->condition = condition;
    return enter(iterator);
}

/* Sends for the nodes that the walk will meet for the first time: it goes down to the right of the next node, whose
   other neighbours it has met before. */
void prefetch_ahead(const tree_item *next)
{
    if (next && next->right)
        prefetch_children(next->right);
}

/* Makes the next accepted node the current one and returns it, or returns null when there is none. */
tree_item *advance(tree_iter *iterator)
{
    while (tree_item *const node = iterator->cursor) {
        iterator->cursor = node->next;
        prefetch_ahead(node->next);
        if (iterator->mode == every_item || iterator->condition(node->item)) {
            iterator->current = node;
            return node;
        }
        if (iterator->mode == while_accepted)
            break;
    }
    return nullptr;
}

/* Takes the iterator out of its tree's list and frees it. Raises `line` when it is not there. */
void end(tree_iter *iterator, int32_t line)
{
    assert(iterator->tree); /* else it outlived the release of its tree */
    GL_list *const iterators = iterator->tree->iterators;
    GL_node *registered;
    if (GL_find_item(iterators, iterator, &registered))
        GL_remove_item(iterators, registered);
    else
        raise_broken_precondition(line);
    free_record(iterator);
}

/* Leads the iterator off `node`, which is still in the chain. */
void lead_off(tree_iter *iterator, const tree_item *node)
{
    if (iterator->current == node)
        iterator->current = nullptr;
    if (iterator->cursor == node)
        iterator->cursor = node->next;
}

void lead_all_off(const tree *t, const tree_item *node)
{
    for_each_iterator(t, [node](tree_iter *iterator) { lead_off(iterator, node); });
}

} // namespace

void mova::gt::fix_up_insertion(const tree *t, tree_item *node)
{
    for_each_iterator(t, [node](tree_iter *iterator) {
        if (iterator->current && iterator->current->next == node)
            iterator->cursor = node;
    });
}

void mova::gt::fix_up_removal_by_right_child(const tree *t, tree_item *node)
{
    if (node->left)
        raise_broken_precondition(1728);
    lead_all_off(t, node);
}

void mova::gt::fix_up_removal_by_left_child(const tree *t, tree_item *node)
{
    if (node->right)
        raise_broken_precondition(1760);
    lead_all_off(t, node);
}

void mova::gt::fix_up_removal_by_predecessor(const tree *t, tree_item *node, tree_item *predecessor)
{
    if (!node->left || !node->right || predecessor->right)
        raise_broken_precondition(1799);
    for_each_iterator(t, [node, predecessor](tree_iter *iterator) {
        lead_off(iterator, node);
        /* Deliberate, although it is the predecessor's record that stays and the node's that is released: the iterator
           is left on a released record, as the header says. */
        if (iterator->current == predecessor)
            iterator->current = node;
        if (iterator->cursor == predecessor)
            iterator->cursor = node;
    });
}

tree_iter *GT_all_items(tree *t)
{
    return enter(allocate_iterator(t, t->first, every_item));
}

tree_iter *GT_all_items_conditional(tree *t, GT_condition condition)
{
    return create_iterator(t, t->first, accepted_items, condition);
}

tree_iter *GT_all_items_while_conditioned(tree *t, GT_condition condition)
{
    return create_iterator(t, t->first, while_accepted, condition);
}

tree_iter *GT_from_current(tree_iter *iterator)
{
    return create_iterator(iterator->tree, iterator->current, every_item, iterator->condition);
}

tree_iter *GT_from_current_conditional(tree_iter *iterator, GT_condition condition)
{
    return create_iterator(iterator->tree, iterator->current, accepted_items, condition);
}

tree_iter *GT_from_current_while_conditioned(tree_iter *iterator, GT_condition condition)
{
    return create_iterator(iterator->tree, iterator->current, while_accepted, condition);
}

tree_iter *GT_from_next(tree_iter *iterator)
{
    return create_iterator(iterator->tree, iterator->cursor, every_item, iterator->condition);
}

tree_iter *GT_from_next_conditional(tree_iter *iterator, GT_condition condition)
{
    return create_iterator(iterator->tree, iterator->cursor, accepted_items, condition);
}

tree_iter *GT_from_next_while_conditioned(tree_iter *iterator, GT_condition condition)
{
    return create_iterator(iterator->tree, iterator->cursor, while_accepted, condition);
}

int GT_next_item(tree_iter *iterator, void **item)
{
    if (const tree_item *const node = advance(iterator)) {
        *item = node->item;
        return 1;
    }
    end(iterator, 896);
    return 0;
}

int GT_next_position(tree_iter *iterator, tree_item **position)
{
    if (tree_item *const node = advance(iterator)) {
        *position = node;
        return 1;
    }
    end(iterator, 937);
    return 0;
}

int GT_current_item(tree_iter *iterator, void **item)
{
    assert(iterator->current);
    *item = iterator->current->item;
    return *item != nullptr;
}

void GT_end_iterator(tree_iter *iterator)
{
    end(iterator, 962);
}
