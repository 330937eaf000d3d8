/* SPDX-License-Identifier: MIT */
/* Element stack: last in, first out, of copies of fixed-size elements.

   A stack is an element list (mova/lists/element_list.h) that is always open. Its top is the list's `last` node:

       ES_push C            ES_pop

       null <- A <-> B      null <- A <-> B <-> C      null <- A <-> B
                     top                        top                  top

   The invariants, the ownership and the costs are the element list's, and a stack may be handed to the EL_ functions.
   Nothing here raises: ES_pop and ES_inspect_top return 0 where the stack is empty. A null stack, and a buffer that is
   smaller than the element size, are undefined.

   Failures: an exception or a jump out of the memory service passes through. The stack is unchanged, and nothing is
   lost. */
#ifndef MOVA_LISTS_ELEMENT_STACK_H
#define MOVA_LISTS_ELEMENT_STACK_H

#include <mova/lists/element_list.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* A stack's head: an element list's, whose every field means the same. Its `last` is the top. */
typedef EL_list ES_stack;

/* Returns a new empty stack of elements of `element_size` bytes, of which the low 16 bits count. */
ES_stack *ES_create(uint32_t element_size) __attribute__((warn_unused_result));

/* Frees all elements and the head, and sets `*stack` to null. Linear. */
void ES_release(ES_stack **stack) __attribute__((nonnull(1)));

/* Frees all elements. Linear. */
void ES_make_empty(ES_stack *stack) __attribute__((nonnull(1)));

/* Returns the number of elements. */
int32_t ES_count_items(const ES_stack *stack) __attribute__((nonnull(1)));

/* Returns 1 when the stack holds no element, else 0. It looks at the ends, not at the count. */
int ES_is_empty(const ES_stack *stack) __attribute__((nonnull(1)));

/* Copies an element onto the top. Returns its position. */
EL_node *ES_push(ES_stack *stack, const void *element) __attribute__((nonnull(1)));

/* Copies the top element into `buffer`, removes it and returns 1; returns 0 and leaves the buffer when the stack is
   empty. */
int ES_pop(ES_stack *stack, void *buffer) __attribute__((nonnull(1)));

/* As ES_pop, but removes nothing. */
int ES_inspect_top(const ES_stack *stack, void *buffer) __attribute__((nonnull(1)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#if !defined MOVA_NO_INLINE || defined MOVA_OWN_ELEMENT_STACK
#include <mova/lists/inline/element_stack.h>
#endif

#endif
