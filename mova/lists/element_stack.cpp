/* SPDX-License-Identifier: MIT */
#include <mova/lists/element_stack.h>

#include <mova/frame/internal/copy_element.h>

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

int32_t ES_count_items(const ES_stack *stack)
{
    return EL_count_items(stack);
}

int ES_is_empty(const ES_stack *stack)
{
    return !stack->first && !stack->last;
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

int ES_inspect_top(const ES_stack *stack, void *buffer)
{
    if (ES_is_empty(stack))
        return 0;
    mova::copy_element(buffer, EL_element(stack->last), stack->element_size);
    return 1;
}
