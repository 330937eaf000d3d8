/* SPDX-License-Identifier: MIT */
#include <string.h>

#include <mova/frame/host.h>
#include <mova/host/errors.h>

#include "c_api.h"
#include "check.h"

static char text[160];
static int32_t code;

static void keep_error(const char *module, int32_t line, int32_t raised)
{
    mova_error_text(text, sizeof text, module, line, raised);
    code = raised;
}

void drive_errors(void)
{
    CHECK(mova_set_error_handler(keep_error) == NULL);
    EX_raise_exception_line("plut", 155, MOVA_ID_NOT_FOUND);
    CHECK(code == 4397);
    CHECK(strcmp(text, "plut, line 155: an id or a pointer was not found (4397). "
                       "io_lut_get_ptr: there is no such id, or it is free") == 0);
    CHECK(strcmp(mova_error_description("plut", 155), strstr(text, "io_lut_get_ptr")) == 0);
    CHECK(mova_set_error_handler(NULL) == keep_error);
}
