/* SPDX-License-Identifier: MIT */
#define MOVA_OWN_SIMPLE_LIST
#include <mova/lists/simple_list.h>

#include <mova/frame/host.h>
#include <mova/frame/internal/assert.h>
#include <mova/frame/internal/module_records.h>
#include <mova/frame/internal/undo.h>
#include <mova/lists/internal/chain.h>
#include <mova/lists/internal/invariants.h>

namespace chain = mova::chain;
using chain::shape;
using mova::broken_invariant;
using mova::intact;

namespace {

using links = mova_sl_links;

/* What SL_check counts for the head, on every platform. */
constexpr uint32_t head_bytes = 16;

links *links_of(void *item)
{
    return static_cast<links *>(item);
}

links *first_of(const SL_list *list)
{
    return links_of(list->first);
}

shape shape_of(const SL_list *list)
{
    return list->closed ? shape::ring : shape::open;
}

void free_head(SL_list **list)
{
    MM_dealloc_item(*list, sizeof(SL_list));
    *list = nullptr;
}

/* The list begins with the item that `free_item` is called for, since those before it may be gone: so it can be released
   after a jump. After an exception its count and its links hold again too. */
void free_items(SL_list *list, SL_free_fn free_item)
{
    SL_reset_closed(list);
    mova::or_undo(
        [&] {
            chain::for_each(first_of(list), [&](links *node) {
                list->first = node;
                void *item = node;
                free_item(&item);
            });
        },
        [&] { list->count = chain::keep_from(*list, first_of(list)); });
}

} // namespace

SL_list *SL_create(void)
{
    SL_list *list = static_cast<SL_list *>(MM_alloc_item(sizeof(SL_list)));
    *list = {nullptr, nullptr, 0, 0};
    return list;
}

void SL_release(SL_list **list)
{
    if ((*list)->count != 0)
        mova::raise(mova::modules.sgenlist, 75, MOVA_PRECONDITION_BROKEN);
    free_head(list);
}

void SL_total_release(SL_list **list, SL_free_fn free_item)
{
    free_items(*list, free_item);
    free_head(list);
}

void SL_make_empty(SL_list *list, SL_free_fn free_item)
{
    free_items(list, free_item);
    *list = {nullptr, nullptr, 0, 0};
}

SL_list *SL_total_copy(const SL_list *list, SL_copy_fn copy_item)
{
    SL_list *copy = SL_create();
    mova::or_undo(
        [&] {
            SL_iterator iterator = SL_all_items(list);
            for (void *item; SL_next_item(&iterator, &item);)
                SL_append_after_last(copy, copy_item(item));
        },
        [&] { free_head(&copy); });
    if (list->closed)
        SL_set_closed(copy);
    assert(intact(broken_invariant(*copy)));
    return copy;
}

int32_t SL_check(const SL_list *list, SL_size_fn item_size)
{
    uint32_t bytes = head_bytes;
    for (links *node = first_of(list); node; node = node->next == list->first ? nullptr : node->next)
        bytes += static_cast<uint32_t>(item_size(node));
    return static_cast<int32_t>(bytes);
}

void SL_set_closed(SL_list *list)
{
    chain::close<links>(*list);
    list->closed = 1;
}

void SL_reset_closed(SL_list *list)
{
    chain::open<links>(*list);
    list->closed = 0;
}

void *SL_advance(const SL_list *, void *item, int32_t n)
{
    return chain::advance(links_of(item), n);
}

int32_t SL_get_index(const SL_list *list, const void *item)
{
    return chain::index_of(*list, static_cast<const links *>(item));
}

void *SL_pos_at_index(const SL_list *list, int32_t index)
{
    return chain::node_at<links>(*list, index);
}

void SL_append_after_last(SL_list *list, void *item)
{
    chain::link_last(*list, links_of(item), shape_of(list));
    ++list->count;
}

void SL_insert_before_first(SL_list *list, void *item)
{
    chain::link_first(*list, links_of(item), shape_of(list));
    ++list->count;
}

void SL_insert_before(SL_list *list, void *position, void *item)
{
    chain::link_before(*list, links_of(position), links_of(item), shape_of(list));
    ++list->count;
}

void SL_insert_after(SL_list *list, void *position, void *item)
{
    chain::link_after(*list, links_of(position), links_of(item), shape_of(list));
    ++list->count;
}

int SL_insert_before_index(SL_list *list, int32_t index, void *item)
{
    void *position = SL_pos_at_index(list, index);
    if (!position)
        return 0;
    SL_insert_before(list, position, item);
    return 1;
}

int SL_insert_after_index(SL_list *list, int32_t index, void *item)
{
    void *position = SL_pos_at_index(list, index);
    if (!position)
        return 0;
    SL_insert_after(list, position, item);
    return 1;
}

void SL_insert_unique(SL_list *list, void *item)
{
    for (links *node = first_of(list); node; node = node->next) {
        if (node == item)
            return;
    }
    SL_append_after_last(list, item);
}

void SL_remove_item(SL_list *list, void *item)
{
    links *node = links_of(item);
    chain::unlink(*list, node, shape_of(list));
    node->prev = node->next = nullptr;
    if (--list->count == 0)
        list->first = list->last = nullptr;
}

int SL_remove_at_index(SL_list *list, int32_t index)
{
    void *item = SL_pos_at_index(list, index);
    if (!item)
        return 0;
    SL_remove_item(list, item);
    return 1;
}

void SL_reverse(SL_list *list)
{
    const bool was_closed = list->closed != 0;
    if (was_closed)
        SL_reset_closed(list);
    chain::reverse<links>(*list);
    if (was_closed)
        SL_set_closed(list);
    assert(intact(broken_invariant(*list)));
}

void SL_append_list(SL_list *list, SL_list **other)
{
    assert(list != *other);
    chain::splice_last<links>(*list, **other);
    list->count += (*other)->count;
    free_head(other);
}

void SL_roll(SL_list *list, void *item)
{
    if (!list->closed)
        return;
    if (!links_of(item)->prev)
        mova::raise(mova::modules.sgenlist, 743, MOVA_PRECONDITION_BROKEN);
    chain::roll(*list, links_of(item));
}
