/* SPDX-License-Identifier: MIT */
#define MOVA_OWN_ELEMENT_STACK
#include <mova/lists/element_stack.h>

ES_stack *ES_create(uint32_t element_size)
{
    return EL_create(element_size);
}

void ES_release(ES_stack **stack)
{
    EL_release(stack);
}

void ES_make_empty(ES_stack *stack)
{
    EL_make_empty(stack);
}

EL_node *ES_push(ES_stack *stack, const void *element)
{
    return EL_append_after_last(stack, element);
}

int ES_pop(ES_stack *stack, void *buffer)
{
    if (!ES_inspect_top(stack, buffer))
        return 0;
    EL_remove_item(stack, stack->last);
    return 1;
}
