/* SPDX-License-Identifier: MIT */
#define MOVA_OWN_GENERIC_LIST
#include <mova/lists/generic_list.h>

#include <mova/frame/host.h>
#include <mova/frame/internal/assert.h>
#include <mova/frame/internal/undo.h>
#include <mova/lists/internal/chain.h>
#include <mova/lists/internal/invariants.h>

#include <utility>

namespace chain = mova::chain;
using chain::shape;
using mova::broken_invariant;
using mova::intact;

namespace {

/* What GL_check counts for a head or a node, on every platform. */
constexpr uint32_t record_bytes = 12;

GL_node *create_node(void *item)
{
    GL_node *node = static_cast<GL_node *>(MM_alloc_item(sizeof(GL_node)));
    node->item = item;
    return node;
}

void free_node(GL_node *node)
{
    MM_dealloc_item(node, sizeof(GL_node));
}

void free_head(GL_list **list)
{
    MM_dealloc_item(*list, sizeof(GL_list));
    *list = nullptr;
}

void free_nodes(const GL_list *list)
{
    chain::for_each(list->first, free_node);
}

/* The list begins with the item that `free_item` is called for, since the nodes before it are freed: so it can be released
   after a jump. After an exception its count and its links hold again too. */
void free_items_and_nodes(GL_list *list, GL_free_fn free_item)
{
    mova::or_undo(
        [&] {
            chain::for_each(list->first, [&](GL_node *node) {
                list->first = node;
                free_item(&node->item);
                free_node(node);
            });
        },
        [&] { list->count = chain::keep_from(*list, list->first); });
}

/* Returns a new list of what `item_of` makes of each node. */
template <class ItemOf>
GL_list *copy_with(const GL_list *list, ItemOf item_of)
{
    GL_list *copy = GL_create();
    mova::or_undo(
        [&] { chain::for_each(list->first, [&](GL_node *node) { GL_append_after_last(copy, item_of(node)); }); },
        [&] { GL_release(&copy); });
    assert(intact(broken_invariant(*copy)));
    return copy;
}

void reset(GL_list *list)
{
    *list = {nullptr, nullptr, 0};
}

GL_node *find_node(const GL_list *list, const void *item)
{
    chain::walker<GL_node> walk(list->first);
    while (walk.node() && walk.node()->item != item)
        walk.step();
    return walk.node();
}

} // namespace

GL_list *GL_create(void)
{
    GL_list *list = static_cast<GL_list *>(MM_alloc_item(sizeof(GL_list)));
    reset(list);
    return list;
}

void GL_release(GL_list **list)
{
    if (!*list)
        return;
    free_nodes(*list);
    free_head(list);
}

void GL_total_release(GL_list **list, GL_free_fn free_item)
{
    free_items_and_nodes(*list, free_item);
    free_head(list);
}

void GL_make_empty(GL_list *list)
{
    free_nodes(list);
    reset(list);
}

void GL_total_make_empty(GL_list *list, GL_free_fn free_item)
{
    free_items_and_nodes(list, free_item);
    reset(list);
}

GL_list *GL_copy(const GL_list *list)
{
    return copy_with(list, [](const GL_node *node) { return node->item; });
}

GL_list *GL_total_copy(const GL_list *list, GL_copy_fn copy_item)
{
    return copy_with(list, [copy_item](const GL_node *node) { return copy_item(node->item); });
}

int32_t GL_check(const GL_list *list, GL_size_fn item_size)
{
    uint32_t bytes = record_bytes;
    chain::for_each(list->first, [&bytes, item_size](GL_node *node) {
        bytes += record_bytes + static_cast<uint32_t>(item_size(node->item));
    });
    return static_cast<int32_t>(bytes);
}

GL_node *GL_append_after_last(GL_list *list, void *item)
{
    GL_node *node = create_node(item);
    chain::link_last(*list, node, shape::always_open);
    ++list->count;
    return node;
}

GL_node *GL_insert_before_first(GL_list *list, void *item)
{
    GL_node *node = create_node(item);
    chain::link_first(*list, node, shape::always_open);
    ++list->count;
    return node;
}

GL_node *GL_insert_before(GL_list *list, GL_node *position, void *item)
{
    GL_node *node = create_node(item);
    chain::link_before(*list, position, node, shape::always_open);
    ++list->count;
    return node;
}

GL_node *GL_insert_after(GL_list *list, GL_node *position, void *item)
{
    GL_node *node = create_node(item);
    chain::link_after(*list, position, node, shape::always_open);
    ++list->count;
    return node;
}

GL_node *GL_insert_unique(GL_list *list, void *item)
{
    return find_node(list, item) ? nullptr : GL_append_after_last(list, item);
}

void GL_move_before_first(GL_list *list, GL_node *position)
{
    if (position == list->first)
        return;
    chain::unlink(*list, position, shape::always_open);
    chain::link_first(*list, position, shape::always_open);
}

void GL_append_list(GL_list *target, GL_list **source)
{
    assert(target != *source);
    chain::splice_last<GL_node>(*target, **source);
    target->count += (*source)->count;
    free_head(source);
}

int GL_find_item(const GL_list *list, const void *item, GL_node **position)
{
    *position = find_node(list, item);
    return *position != nullptr;
}

void GL_remove_item(GL_list *list, GL_node *position)
{
    chain::unlink(*list, position, shape::always_open);
    free_node(position);
    --list->count;
    assert((list->count == 0) == !list->first); /* invariant 2 */
}

void GL_swap_item(GL_node *position, void **item)
{
    std::swap(position->item, *item);
}
