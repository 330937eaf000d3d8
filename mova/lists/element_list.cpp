/* SPDX-License-Identifier: MIT */
#define MOVA_OWN_ELEMENT_LIST
#include <mova/lists/element_list.h>

#include <cstring>

#include <mova/frame/host.h>
#include <mova/frame/internal/assert.h>
#include <mova/frame/inline/copy_element.h>
#include <mova/frame/internal/module_records.h>
#include <mova/frame/internal/undo.h>
#include <mova/lists/internal/chain.h>
#include <mova/lists/internal/invariants.h>

namespace chain = mova::chain;
using chain::shape;
using mova::broken_invariant;
using mova::intact;

namespace {

shape shape_of(const EL_list *list)
{
    return list->closed ? shape::ring : shape::open;
}

size_t node_bytes(const EL_list *list)
{
    return sizeof(EL_node) + list->element_size;
}

EL_node *create_node(const EL_list *list, const void *element)
{
    EL_node *node = static_cast<EL_node *>(MM_alloc_item(node_bytes(list)));
    mova_copy_element(EL_element(node), element, list->element_size);
    return node;
}

void free_nodes(EL_list *list)
{
    if (list->closed)
        EL_reset_closed(list);
    chain::for_each(list->first, [bytes = node_bytes(list)](EL_node *node) { MM_dealloc_item(node, bytes); });
}

void free_head(EL_list **list)
{
    MM_dealloc_item(*list, sizeof(EL_list));
    *list = nullptr;
}

/* Calls `visit` with each node from `from` along `next` to `to`. Its successor is read first, so `visit` may remove
   it. */
template <class Visit>
void for_each_inbetween(const EL_list *list, EL_node *from, EL_node *to, Visit visit)
{
    EL_iterator iterator = EL_all_items_inbetween(list, from, to, 1);
    for (EL_node *position; EL_next_position(&iterator, &position);)
        visit(position);
}

/* Returns a new list that `fill` puts copies into. Where it fails by an exception they are freed with the list. */
template <class Fill>
EL_list *create_filled(uint32_t element_size, Fill fill)
{
    EL_list *list = EL_create(element_size);
    mova::or_undo([&] { fill(list); }, [&] { EL_release(&list); });
    return list;
}

} // namespace

EL_list *EL_create(uint32_t element_size)
{
    EL_list *list = static_cast<EL_list *>(MM_alloc_item(sizeof(EL_list)));
    list->first = list->last = nullptr;
    list->element_size = static_cast<uint16_t>(element_size);
    list->count = 0;
    list->closed = 0;
    return list;
}

void EL_release(EL_list **list)
{
    free_nodes(*list);
    free_head(list);
}

void EL_make_empty(EL_list *list)
{
    free_nodes(list);
    list->first = list->last = nullptr;
    list->count = 0;
}

void EL_set_closed(EL_list *list)
{
    chain::close<EL_node>(*list);
    list->closed = 1;
}

void EL_reset_closed(EL_list *list)
{
    chain::open<EL_node>(*list);
    list->closed = 0;
}

int32_t EL_count_items_inbetween(const EL_list *list, EL_node *from, EL_node *to)
{
    int32_t count = 0;
    for_each_inbetween(list, from, to, [&count](EL_node *) { ++count; });
    return count;
}

EL_node *EL_append_after_last(EL_list *list, const void *element)
{
    EL_node *node = create_node(list, element);
    chain::link_last(*list, node, shape_of(list));
    ++list->count;
    return node;
}

EL_node *EL_insert_before_first(EL_list *list, const void *element)
{
    EL_node *node = create_node(list, element);
    chain::link_first(*list, node, shape_of(list));
    ++list->count;
    return node;
}

EL_node *EL_insert_before(EL_list *list, EL_node *position, const void *element)
{
    EL_node *node = create_node(list, element);
    chain::link_before(*list, position, node, shape_of(list));
    ++list->count;
    return node;
}

EL_node *EL_insert_after(EL_list *list, EL_node *position, const void *element)
{
    EL_node *node = create_node(list, element);
    chain::link_after(*list, position, node, shape_of(list));
    ++list->count;
    return node;
}

EL_node *EL_insert_before_index(EL_list *list, int32_t index, const void *element)
{
    EL_node *position = EL_get_pos_at_index(list, index);
    return position ? EL_insert_before(list, position, element) : nullptr;
}

EL_node *EL_insert_after_index(EL_list *list, int32_t index, const void *element)
{
    EL_node *position = EL_get_pos_at_index(list, index);
    return position ? EL_insert_after(list, position, element) : nullptr;
}

EL_node *EL_advance(const EL_list *, EL_node *position, int32_t steps)
{
    return chain::advance(position, steps);
}

int32_t EL_get_index(const EL_list *list, const EL_node *position)
{
    return chain::index_of(*list, position);
}

EL_node *EL_get_pos_at_index(const EL_list *list, int32_t index)
{
    return chain::node_at<EL_node>(*list, index);
}

void *EL_get_item_at_index(const EL_list *list, int32_t index)
{
    EL_node *position = EL_get_pos_at_index(list, index);
    return position ? EL_element(position) : nullptr;
}

void EL_remove_item(EL_list *list, EL_node *position)
{
    chain::unlink(*list, position, shape_of(list));
    MM_dealloc_item(position, node_bytes(list));
    if (--list->count == 0)
        list->first = list->last = nullptr;
}

int EL_remove_at_index(EL_list *list, int32_t index)
{
    EL_node *position = EL_get_pos_at_index(list, index);
    if (!position)
        return 0;
    EL_remove_item(list, position);
    return 1;
}

void EL_remove_items_inbetween(EL_list *list, EL_node *from, EL_node *to)
{
    for_each_inbetween(list, from, to, [list](EL_node *position) { EL_remove_item(list, position); });
}

void EL_replace_item(EL_node *position, const void *element, uint32_t size)
{
    /* A node may be replaced by its own element, where the source is the list itself. */
    if (size != 0)
        std::memmove(EL_element(position), element, size);
}

void EL_replace_items_inbetween(EL_list *list, EL_node *from, EL_node *to, EL_list *source, uint32_t size)
{
    EL_iterator target = EL_all_items_inbetween(list, from, to, 1);
    EL_iterator elements = EL_all_items(source);
    for (EL_node *position; EL_next_position(&target, &position);) {
        void *element;
        if (!EL_next_item(&elements, &element))
            return mova::raise(mova::modules.egenlist, 557, MOVA_PRECONDITION_BROKEN);
        EL_replace_item(position, element, size);
    }
}

EL_list *EL_total_copy(EL_list *list)
{
    EL_list *copy = create_filled(list->element_size, [list](EL_list *filled) {
        chain::for_each_to(list->first, list->last, [filled](EL_node *node) {
            chain::link_last(*filled, create_node(filled, EL_element(node)), shape::open);
        });
    });
    copy->count = list->count;
    if (list->closed) {
        /* Rings that were joined have ends that are not linked: a copy closes them. */
        EL_set_closed(list);
        EL_set_closed(copy);
    }
    assert(intact(broken_invariant(*copy)));
    return copy;
}

EL_list *EL_total_copy_inbetween(EL_list *list, EL_node *from, EL_node *to)
{
    EL_list *copy = create_filled(list->element_size, [list, from, to](EL_list *filled) {
        for_each_inbetween(list, from, to,
                           [filled](EL_node *position) { EL_append_after_last(filled, EL_element(position)); });
    });
    assert(intact(broken_invariant(*copy)));
    return copy;
}

void EL_append_list(EL_list *target, EL_list **source)
{
    assert(target != *source);
    chain::splice_last<EL_node>(*target, **source);
    target->count += (*source)->count;
    free_head(source);
}

void EL_reverse(EL_list *list)
{
    const bool was_closed = list->closed != 0;
    if (was_closed)
        EL_reset_closed(list);
    chain::reverse<EL_node>(*list);
    if (was_closed)
        EL_set_closed(list);
    assert(intact(broken_invariant(*list)));
}

void EL_roll(EL_list *list, EL_node *position)
{
    if (!position->prev)
        mova::raise(mova::modules.egenlist, 989, MOVA_PRECONDITION_BROKEN);
    if (list->closed)
        chain::roll(*list, position);
}

EL_node *EL_make_open_at_position(EL_list *list, EL_node *position)
{
    EL_node *copy = EL_insert_before(list, position, EL_element(position));
    list->first = position;
    list->last = copy;
    EL_reset_closed(list);
    return position;
}

EL_list *EL_remove_and_get_end_part(EL_list *list, EL_node *position)
{
    /* Both blocks are allocated before anything changes. */
    EL_node *copy = create_node(list, EL_element(position));
    EL_list *end_part =
        mova::or_undo([&] { return EL_create(list->element_size); }, [&] { MM_dealloc_item(copy, node_bytes(list)); });
    chain::link_before(*list, position, copy, shape_of(list));
    *end_part = *list;
    EL_reset_closed(list);
    EL_reset_closed(end_part);
    list->last = copy;
    copy->next = nullptr;
    end_part->first = position;
    position->prev = nullptr;
    list->count = EL_count_items_inbetween(list, list->first, list->last);
    end_part->count = EL_count_items_inbetween(end_part, end_part->first, end_part->last);
    assert(intact(broken_invariant(*list)));
    assert(intact(broken_invariant(*end_part)));
    return end_part;
}
