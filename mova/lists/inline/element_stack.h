/* SPDX-License-Identifier: MIT */
/* Bodies of functions of mova/lists/element_stack.h, where their contracts are. mova/frame/inline.h says what the marks mean. */
#ifndef MOVA_LISTS_INLINE_ELEMENT_STACK_H
#define MOVA_LISTS_INLINE_ELEMENT_STACK_H

#include <mova/frame/host.h>
#include <mova/frame/inline.h>
#include <mova/frame/inline/copy_element.h>
#include <mova/lists/element_stack.h>

#ifdef MOVA_OWN_ELEMENT_STACK
#define ES_INLINE
#else
#define ES_INLINE MOVA_INLINE
#endif

#ifdef __cplusplus
extern "C" {
#endif

ES_INLINE int32_t ES_count_items(const ES_stack *stack)
{
    return stack->count;
}

ES_INLINE int ES_is_empty(const ES_stack *stack)
{
    return !stack->first && !stack->last;
}

ES_INLINE int ES_inspect_top(const ES_stack *stack, void *buffer)
{
    if (ES_is_empty(stack))
        return 0;
    mova_copy_element(buffer, mova_el_element(stack->last), stack->element_size);
    return 1;
}

#ifndef MOVA_OWN_ELEMENT_STACK

extern EL_node *mova_es_call_push(ES_stack *stack, const void *element) MOVA_CALL(ES_push);
extern int mova_es_call_pop(ES_stack *stack, void *buffer) MOVA_CALL(ES_pop);

/* A stack that holds an element. */
MOVA_SHORTCUT EL_node *ES_push(ES_stack *stack, const void *element)
{
    EL_node *node;
    if (stack->closed || !stack->last)
        return mova_es_call_push(stack, element);
    MOVA_ASSERT(stack->first && !stack->last->next);
    node = MOVA_CAST(EL_node *, MM_alloc_item(sizeof(EL_node) + stack->element_size));
    mova_copy_element(mova_el_element(node), element, stack->element_size);
    node->prev = stack->last;
    node->next = NULL;
    stack->last->next = node;
    stack->last = node;
    ++stack->count;
    return node;
}

/* A stack that keeps an element. */
MOVA_SHORTCUT int ES_pop(ES_stack *stack, void *buffer)
{
    EL_node *top = stack->last;
    if (stack->closed || top == stack->first)
        return mova_es_call_pop(stack, buffer);
    MOVA_ASSERT(top->prev->next == top && !top->next);
    mova_copy_element(buffer, mova_el_element(top), stack->element_size);
    stack->last = top->prev;
    stack->last->next = NULL;
    MM_dealloc_item(top, sizeof(EL_node) + stack->element_size);
    --stack->count;
    return 1;
}

#endif

#ifdef __cplusplus
}
#endif
#undef ES_INLINE

#endif
