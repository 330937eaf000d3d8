/* SPDX-License-Identifier: MIT */
/* A calculator for sums that are written with the operator last. */
#include <mova/lists/element_stack.h>
#include <stdio.h>

int main(void)
{
    ES_stack *numbers = ES_create(sizeof(int));
    for (const char *text = "34+2*"; *text; ++text) {
        int number = *text - '0';
        if (*text == '+' || *text == '*') {
            int other;
            ES_pop(numbers, &other);
            ES_pop(numbers, &number);
            number = *text == '+' ? number + other : number * other;
        }
        ES_push(numbers, &number);
    }
    int result;
    if (ES_pop(numbers, &result) && ES_is_empty(numbers))
        printf("%d\n", result);
    ES_release(&numbers);
}
