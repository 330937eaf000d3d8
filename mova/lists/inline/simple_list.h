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

#ifdef __cplusplus
}
#endif
#undef SL_INLINE

#endif
