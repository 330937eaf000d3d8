/* SPDX-License-Identifier: MIT */
#include <limits.h>

#include <mova/lists/element_stack.h>
#include <mova/lists/generic_list.h>

#include "misuse.h"

static const int numbers[] = {1, 2};

static ES_stack *two_numbers(void)
{
    ES_stack *stack = ES_create(sizeof(int));
    ES_push(stack, &numbers[0]);
    ES_push(stack, &numbers[1]);
    return stack;
}

static void null_stack(int misused)
{
    ES_stack *stack = two_numbers();
    ES_is_empty(misused ? NULL : stack);
    ES_release(&stack);
}

static void never_created(int misused)
{
    ES_stack stray = {NULL, NULL, sizeof(int), 0, 0};
    ES_stack *stack = two_numbers();
    ES_push(misused ? &stray : stack, &numbers[0]);
    ES_release(&stack);
}

static void used_after_release(int misused)
{
    int top;
    ES_stack *stack = two_numbers();
    ES_stack *alias = stack;
    if (!misused)
        ES_pop(alias, &top);
    ES_release(&stack);
    if (misused)
        ES_pop(alias, &top);
}

static void released_twice(int misused)
{
    ES_stack *stack = two_numbers();
    ES_stack *alias = stack;
    ES_release(&stack);
    if (misused)
        ES_release(&alias);
}

static void stack_of_another_family(int misused)
{
    GL_list *other = GL_create();
    ES_stack *stack = two_numbers();
    void *wrong = other;
    ES_count_items(misused ? (ES_stack *)wrong : stack);
    ES_release(&stack);
    GL_release(&other);
}

/* A stack may be given to the functions of element lists. */
static void popped_position(int misused)
{
    int top;
    ES_stack *stack = two_numbers();
    EL_node *position = ES_push(stack, &numbers[0]);
    if (misused)
        ES_pop(stack, &top);
    EL_remove_item(stack, position);
    ES_release(&stack);
}

static void iterator_on_a_popped_element(int misused)
{
    int top;
    void *element;
    ES_stack *stack = two_numbers();
    EL_iterator iterator = EL_all_items_reversed(stack);
    if (misused)
        ES_pop(stack, &top);
    EL_next_item(&iterator, &element);
    ES_release(&stack);
}

static void too_many_items(int misused)
{
    ES_stack *stack = two_numbers();
    if (misused)
        stack->count = INT_MAX;
    ES_push(stack, &numbers[0]);
    ES_release(&stack);
}

static void damaged_end(int misused)
{
    ES_stack *stack = two_numbers();
    if (misused)
        stack->last = NULL;
    ES_make_empty(stack);
    ES_release(&stack);
}

static const misuse_cell cells[] = {
    {"null stack", 1, "ES_is_empty: the stack is null", null_stack},
    {"never created", 2, "ES_push: the stack was never created", never_created},
    {"used after release", 2, "ES_pop: the stack was released", used_after_release},
    {"released twice", 2, "ES_release: the stack was released", released_twice},
    {"stack of another family", 2, "ES_count_items: the stack is of another family", stack_of_another_family},
    {"popped position", 3, "EL_remove_item: the position was removed", popped_position},
    {"iterator on a popped element", 4, "EL_next_item: the iterator rests on a removed position",
     iterator_on_a_popped_element},
    {"too many items", 7, "ES_push: the stack would hold more than 2147483647 items", too_many_items},
    {"damaged end", 13, "ES_make_empty: the stack breaks its invariant 2", damaged_end},
};

int main(int arguments, char **argument)
{
    return run_cell(cells, sizeof cells / sizeof cells[0], arguments, argument);
}
