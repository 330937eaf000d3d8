/* SPDX-License-Identifier: MIT */
/* Bodies of functions of mova/lists/element_list.h, where their contracts are. mova/frame/inline.h says what the marks mean. */
#ifndef MOVA_LISTS_INLINE_ELEMENT_LIST_H
#define MOVA_LISTS_INLINE_ELEMENT_LIST_H

#include <stddef.h>
#include <string.h>

#include <mova/frame/inline.h>
#include <mova/lists/element_list.h>
#include <mova/lists/iterator_step.h>

#ifdef MOVA_OWN_ELEMENT_LIST
#define EL_INLINE
#else
#define EL_INLINE MOVA_INLINE
#endif

#ifdef __cplusplus
extern "C" {
#endif

EL_INLINE EL_iterator EL_tested_items_inbetween(const EL_list *list, EL_node *from, EL_node *to, int forward,
                                                EL_test test)
{
    EL_iterator iterator = {NULL, from, to, forward, list->element_size, test};
    return iterator;
}

EL_INLINE EL_iterator EL_all_items_inbetween(const EL_list *list, EL_node *from, EL_node *to, int forward)
{
    return EL_tested_items_inbetween(list, from, to, forward, NULL);
}

EL_INLINE EL_iterator EL_all_items(const EL_list *list)
{
    return EL_all_items_inbetween(list, list->first, list->last, 1);
}

EL_INLINE EL_iterator EL_all_items_reversed(const EL_list *list)
{
    return EL_all_items_inbetween(list, list->last, list->first, 0);
}

/* Makes `next` the current node and fetches its successor. */
MOVA_INLINE_PART EL_node *mova_el_take_next_node(EL_iterator *iterator)
{
    EL_node *node = iterator->next;
    iterator->current = node;
    iterator->next =
        MOVA_CAST(EL_node *, mova_iterator_step(node, iterator->end, iterator->forward, node->prev, node->next));
    return node;
}

EL_INLINE int EL_next_position(EL_iterator *iterator, EL_node **position)
{
    while (iterator->next) {
        EL_node *node = mova_el_take_next_node(iterator);
        *position = node;
        if (!iterator->test || iterator->test(mova_el_element(node)))
            return 1;
    }
    return 0;
}

EL_INLINE int EL_next_item(EL_iterator *iterator, void **element)
{
    while (iterator->next) {
        EL_node *node = mova_el_take_next_node(iterator);
        *element = mova_el_element(node);
        if (!iterator->test || iterator->test(mova_el_element(node)))
            return 1;
    }
    return 0;
}

EL_INLINE int EL_next_item_copy(EL_iterator *iterator, void *buffer)
{
    while (iterator->next) {
        EL_node *node = mova_el_take_next_node(iterator);
        if (!iterator->test || iterator->test(mova_el_element(node))) {
            if (iterator->element_size != 0)
                memcpy(buffer, mova_el_element(node), iterator->element_size);
            return 1;
        }
    }
    return 0;
}

EL_INLINE int32_t EL_count_items(const EL_list *list)
{
    return list->count;
}

#ifdef __cplusplus
}
#endif
#undef EL_INLINE

#endif
