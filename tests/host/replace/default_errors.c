/* SPDX-License-Identifier: MIT */
#include "groups.h"

#include <setjmp.h>
#include <string.h>

#include <mova/frame/host.h>
#include <mova/host/errors.h>

#include "library.h"

static jmp_buf home;
static char raised_text[100];
static int32_t raised_code;

static void keep_and_jump(const char *module, int32_t line, int32_t code)
{
    raised_code = code;
    mova_error_text(raised_text, sizeof raised_text, module, line, code);
    longjmp(home, 1);
}

int code_raised_by(void (*act)(void))
{
    raised_code = 0;
    mova_set_error_handler(keep_and_jump);
    if (setjmp(home) == 0)
        act();
    mova_set_error_handler(NULL);
    return (int)raised_code;
}

void check_errors(void)
{
    CHECK(code_raised_by(library_raises) == MOVA_ID_NOT_FOUND);
    CHECK(strcmp(raised_text, "library, line 7: an id or a pointer was not found (4397)") == 0);
}
