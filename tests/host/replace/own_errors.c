/* SPDX-License-Identifier: MIT */
#include "groups.h"

#include <setjmp.h>
#include <string.h>

#include <mova/frame/host.h>
#include <mova/host/errors.h>

#include "library.h"

static jmp_buf home;
static const char *raised_module;
static int32_t raised_line;
static int32_t raised_code;

void EX_raise_exception_line(const char *module, int32_t line, int32_t code)
{
    raised_module = module;
    raised_line = line;
    raised_code = code;
    longjmp(home, 1);
}

int code_raised_by(void (*act)(void))
{
    raised_code = 0;
    if (setjmp(home) == 0)
        act();
    return (int)raised_code;
}

#ifdef LINKED_STATICALLY
#pragma weak mova_set_error_handler

static void check_that_the_default_is_absent(void)
{
    CHECK(mova_set_error_handler == NULL);
}
#else
static void check_that_the_default_is_absent(void)
{
}
#endif

void check_errors(void)
{
    CHECK(code_raised_by(library_raises) == MOVA_ID_NOT_FOUND);
    CHECK(strcmp(raised_module, "library") == 0);
    CHECK(raised_line == 7);
    CHECK(strstr(mova_error_description("gentree", 1427), "the tree is empty") != NULL);
    check_that_the_default_is_absent();
}
