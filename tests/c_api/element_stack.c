/* SPDX-License-Identifier: MIT */
#include <mova/lists/element_stack.h>

#include "c_api.h"
#include "check.h"

static void push(ES_stack *stack, int number)
{
    CHECK(ES_push(stack, &number) == stack->last);
}

static void push_and_pop(void)
{
    int number = -1;
    ES_stack *stack = ES_create(sizeof number);
    CHECK(ES_is_empty(stack) == 1);
    CHECK(ES_pop(stack, &number) == 0 && number == -1);
    push(stack, 1);
    push(stack, 2);
    CHECK(ES_is_empty(stack) == 0);
    CHECK(ES_inspect_top(stack, &number) == 1 && number == 2);
    CHECK(ES_count_items(stack) == 2);
    CHECK(ES_pop(stack, &number) == 1 && number == 2);
    CHECK(ES_pop(stack, &number) == 1 && number == 1);
    CHECK(ES_inspect_top(stack, &number) == 0);
    ES_release(&stack);
    CHECK(stack == NULL);
}

static void empty(void)
{
    ES_stack *stack = ES_create(sizeof(int));
    push(stack, 1);
    ES_make_empty(stack);
    CHECK(ES_is_empty(stack) == 1 && ES_count_items(stack) == 0);
    ES_release(&stack);
}

void drive_element_stack(void)
{
    push_and_pop();
    empty();
}
