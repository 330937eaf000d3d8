/* SPDX-License-Identifier: MIT */
/* Bodies of functions of mova/lists/generic_list.h, where their contracts are. mova/frame/inline.h says what the marks mean. */
#ifndef MOVA_LISTS_INLINE_GENERIC_LIST_H
#define MOVA_LISTS_INLINE_GENERIC_LIST_H

#include <stddef.h>

#include <mova/frame/inline.h>
#include <mova/lists/generic_list.h>
#include <mova/lists/iterator_step.h>

#ifdef MOVA_OWN_GENERIC_LIST
#define GL_INLINE
#else
#define GL_INLINE MOVA_INLINE
#endif

#ifdef __cplusplus
extern "C" {
#endif

GL_INLINE GL_iterator GL_empty_iter(void)
{
    GL_iterator iterator = {NULL, NULL, NULL, 1, NULL};
    return iterator;
}

GL_INLINE GL_iterator GL_tested_items_inbetween(const GL_list *list, GL_node *from, GL_node *to, int forward,
                                                GL_test test)
{
    GL_iterator iterator = {NULL, from, to, forward, test};
    (void)list;
    return iterator;
}

GL_INLINE GL_iterator GL_all_items_inbetween(const GL_list *list, GL_node *from, GL_node *to, int forward)
{
    return GL_tested_items_inbetween(list, from, to, forward, NULL);
}

GL_INLINE GL_iterator GL_tested_items(const GL_list *list, GL_test test)
{
    return GL_tested_items_inbetween(list, list->first, list->last, 1, test);
}

GL_INLINE GL_iterator GL_all_items(const GL_list *list)
{
    return GL_tested_items(list, NULL);
}

GL_INLINE GL_iterator GL_all_items_reversed(const GL_list *list)
{
    return GL_tested_items_inbetween(list, list->last, list->first, 0, NULL);
}

/* Makes `next` the current node and fetches its successor. */
MOVA_INLINE_PART GL_node *mova_gl_take_next_node(GL_iterator *iterator)
{
    GL_node *node = iterator->next;
    iterator->current = node;
    iterator->next =
        MOVA_CAST(GL_node *, mova_iterator_step(node, iterator->end, iterator->forward, node->prev, node->next));
    return node;
}

GL_INLINE int GL_next_item(GL_iterator *iterator, void **item)
{
    while (iterator->next) {
        GL_node *node = mova_gl_take_next_node(iterator);
        *item = node->item;
        if (!iterator->test || iterator->test(node->item))
            return 1;
    }
    return 0;
}

GL_INLINE int GL_next_position(GL_iterator *iterator, GL_node **position)
{
    while (iterator->next) {
        GL_node *node = mova_gl_take_next_node(iterator);
        *position = node;
        if (!iterator->test || iterator->test(node->item))
            return 1;
    }
    return 0;
}

GL_INLINE int32_t GL_count_items(const GL_list *list)
{
    return list->count;
}

#ifdef __cplusplus
}
#endif
#undef GL_INLINE

#endif
