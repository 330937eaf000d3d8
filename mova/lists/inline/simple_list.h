/* SPDX-License-Identifier: MIT */
/* Bodies of functions of mova/lists/simple_list.h, where their contracts are. mova/frame/inline.h says what the marks mean. */
#ifndef MOVA_LISTS_INLINE_SIMPLE_LIST_H
#define MOVA_LISTS_INLINE_SIMPLE_LIST_H

#include <stddef.h>

#include <mova/frame/inline.h>
#include <mova/lists/iterator_step.h>
#include <mova/lists/simple_list.h>

#ifdef MOVA_OWN_SIMPLE_LIST
#define SL_INLINE
#else
#define SL_INLINE MOVA_INLINE
#endif

#ifdef __cplusplus
extern "C" {
#endif

SL_INLINE SL_iterator SL_empty_iter(void)
{
    SL_iterator iterator = {NULL, NULL, NULL, 1, 0, NULL};
    return iterator;
}

SL_INLINE SL_iterator SL_tested_items_inbetween(const SL_list *list, void *from, void *to, int forward, SL_test test)
{
    SL_iterator iterator = {NULL, from, to, forward, 0, test};
    (void)list;
    return iterator;
}

SL_INLINE SL_iterator SL_all_items_inbetween(const SL_list *list, void *from, void *to, int forward)
{
    return SL_tested_items_inbetween(list, from, to, forward, NULL);
}

SL_INLINE SL_iterator SL_tested_items(const SL_list *list, SL_test test)
{
    return SL_tested_items_inbetween(list, list->first, list->last, 1, test);
}

SL_INLINE SL_iterator SL_tested_items_reversed(const SL_list *list, SL_test test)
{
    return SL_tested_items_inbetween(list, list->last, list->first, 0, test);
}

SL_INLINE SL_iterator SL_all_items(const SL_list *list)
{
    return SL_tested_items(list, NULL);
}

SL_INLINE SL_iterator SL_all_items_reversed(const SL_list *list)
{
    return SL_tested_items_reversed(list, NULL);
}

SL_INLINE int SL_next_item(SL_iterator *iterator, void **item)
{
    while (iterator->upcoming) {
        mova_sl_links *node = MOVA_CAST(mova_sl_links *, iterator->upcoming);
        iterator->current = node;
        iterator->upcoming = mova_iterator_step(node, iterator->end, iterator->forward, node->prev, node->next);
        if (!iterator->test || iterator->test(node)) {
            *item = node;
            return 1;
        }
    }
    return 0;
}

SL_INLINE int32_t SL_count_items(const SL_list *list)
{
    return list->count;
}

#ifndef MOVA_OWN_SIMPLE_LIST

/* ---- linking and unlinking: what needs no look at the other end of a ring, nor at an empty list ---- */

extern void mova_sl_call_append_after_last(SL_list *list, void *item) MOVA_CALL(SL_append_after_last);
extern void mova_sl_call_insert_before_first(SL_list *list, void *item) MOVA_CALL(SL_insert_before_first);
extern void mova_sl_call_insert_before(SL_list *list, void *position, void *item) MOVA_CALL(SL_insert_before);
extern void mova_sl_call_insert_after(SL_list *list, void *position, void *item) MOVA_CALL(SL_insert_after);
extern void mova_sl_call_remove_item(SL_list *list, void *item) MOVA_CALL(SL_remove_item);

/* Open lists that are not empty. */
MOVA_SHORTCUT void SL_append_after_last(SL_list *list, void *item)
{
    mova_sl_links *node = MOVA_CAST(mova_sl_links *, item), *last = MOVA_CAST(mova_sl_links *, list->last);
    if (list->closed || !last) {
        mova_sl_call_append_after_last(list, item);
        return;
    }
    MOVA_ASSERT(list->first && !last->next); /* invariants 2 and 3 */
    node->prev = last;
    node->next = NULL;
    last->next = node;
    list->last = node;
    ++list->count;
}

/* Open lists that are not empty. */
MOVA_SHORTCUT void SL_insert_before_first(SL_list *list, void *item)
{
    mova_sl_links *node = MOVA_CAST(mova_sl_links *, item), *first = MOVA_CAST(mova_sl_links *, list->first);
    if (list->closed || !first) {
        mova_sl_call_insert_before_first(list, item);
        return;
    }
    MOVA_ASSERT(list->last && !first->prev); /* invariants 2 and 3 */
    node->prev = NULL;
    node->next = first;
    first->prev = node;
    list->first = node;
    ++list->count;
}

MOVA_INLINE_PART void mova_sl_link_between(SL_list *list, mova_sl_links *before, void *item, mova_sl_links *after)
{
    mova_sl_links *node = MOVA_CAST(mova_sl_links *, item);
    MOVA_ASSERT(before->next == after && after->prev == before); /* invariant 4 */
    node->prev = before;
    node->next = after;
    before->next = node;
    after->prev = node;
    ++list->count;
}

/* All but before the first. */
MOVA_SHORTCUT void SL_insert_before(SL_list *list, void *position, void *item)
{
    mova_sl_links *after = MOVA_CAST(mova_sl_links *, position);
    if (position == list->first)
        mova_sl_call_insert_before(list, position, item);
    else
        mova_sl_link_between(list, after->prev, item, after);
}

/* All but after the last. */
MOVA_SHORTCUT void SL_insert_after(SL_list *list, void *position, void *item)
{
    mova_sl_links *before = MOVA_CAST(mova_sl_links *, position);
    if (position == list->last)
        mova_sl_call_insert_after(list, position, item);
    else
        mova_sl_link_between(list, before, item, before->next);
}

/* All but the last, and the first of a ring. */
MOVA_SHORTCUT void SL_remove_item(SL_list *list, void *item)
{
    mova_sl_links *node = MOVA_CAST(mova_sl_links *, item), *prev = node->prev, *next = node->next;
    if (item == list->last || (item == list->first && list->closed)) {
        mova_sl_call_remove_item(list, item);
        return;
    }
    MOVA_ASSERT(next->prev == node); /* invariant 4 */
    if (item == list->first)
        list->first = next;
    else
        prev->next = next;
    next->prev = prev;
    node->prev = node->next = NULL;
    --list->count;
}

#endif

#ifdef __cplusplus
}
#endif
#undef SL_INLINE

#endif
