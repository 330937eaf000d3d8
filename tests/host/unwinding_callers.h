/* SPDX-License-Identifier: MIT */
/* Callers in C that stand between a C++ program and the library. */
#ifndef MOVA_TESTS_HOST_UNWINDING_CALLERS_H
#define MOVA_TESTS_HOST_UNWINDING_CALLERS_H

#include <mova/lists/generic_list.h>

#ifdef __cplusplus
extern "C" {
#endif

/* How often a caller's frame was left, by its end or by an exception that passed through it. */
extern int frames_left;

/* Each calls the library function of that name, through its exported symbol. */
GL_list *c_total_copy(const GL_list *list, GL_copy_fn copy_item);
int c_next_item(GL_iterator *iterator, void **item);
void c_raise(const char *module, int32_t line, int32_t code);

/* Each runs into a longjmp out of what the library called, and returns 1 when it has come back that way. */
int jump_out_of_the_error_handler(void);
int jump_out_of_a_test(GL_iterator *iterator);
int jump_out_of_a_free_callback(GL_list *list);
int jump_out_of_a_text_function(void);

#ifdef __cplusplus
}
#endif

#endif
