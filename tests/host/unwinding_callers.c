/* SPDX-License-Identifier: MIT */
#include "unwinding_callers.h"

#include <setjmp.h>

#include <mova/frame/host.h>
#include <mova/host/errors.h>
#include <mova/host/messages.h>

int frames_left;

static void leave(int *const *frames)
{
    ++**frames;
}

/* A pointer that the compiler cannot see through, so that the call is not put inline. */
static int (*volatile exported_next_item)(GL_iterator *, void **) = GL_next_item;

GL_list *c_total_copy(const GL_list *list, GL_copy_fn copy_item)
{
    int *const frames __attribute__((cleanup(leave), unused)) = &frames_left;
    return GL_total_copy(list, copy_item);
}

int c_next_item(GL_iterator *iterator, void **item)
{
    int *const frames __attribute__((cleanup(leave), unused)) = &frames_left;
    return exported_next_item(iterator, item);
}

void c_raise(const char *module, int32_t line, int32_t code)
{
    int *const frames __attribute__((cleanup(leave), unused)) = &frames_left;
    EX_raise_exception_line(module, line, code);
}

static jmp_buf home;

static void jump_from_handler(const char *module, int32_t line, int32_t code)
{
    (void)module;
    (void)line;
    (void)code;
    longjmp(home, 1);
}

static int jump_from_test(void *item)
{
    (void)item;
    longjmp(home, 1);
}

static void jump_from_free(void **item)
{
    (void)item;
    longjmp(home, 1);
}

static void jump_from_text(const char *text)
{
    (void)text;
    longjmp(home, 1);
}

int jump_out_of_the_error_handler(void)
{
    mova_set_error_handler(jump_from_handler);
    if (setjmp(home) != 0)
        return 1;
    EX_raise_exception_line("genlist", 1, MOVA_PRECONDITION_BROKEN);
    return 0;
}

int jump_out_of_a_test(GL_iterator *iterator)
{
    iterator->test = jump_from_test;
    if (setjmp(home) != 0)
        return 1;
    void *item;
    exported_next_item(iterator, &item);
    return 0;
}

int jump_out_of_a_free_callback(GL_list *list)
{
    if (setjmp(home) != 0)
        return 1;
    GL_total_make_empty(list, jump_from_free);
    return 0;
}

int jump_out_of_a_text_function(void)
{
    mova_set_debug_print(jump_from_text);
    if (setjmp(home) != 0)
        return 1;
    mova_dprintf("%s", "text");
    return 0;
}
