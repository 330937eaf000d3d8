/* SPDX-License-Identifier: MIT */
#include "groups.h"

#include <stdarg.h>
#include <string.h>

#include <mova/frame/host.h>
#include <mova/host/messages.h>

#include "library.h"

static char printed[100];
static char shown[100];
static int breaks;

void mova_dprintf(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(printed, sizeof printed, format, arguments);
    va_end(arguments);
}

void debug_break(void)
{
    ++breaks;
}

void MSG_Message(const char *text)
{
    snprintf(shown, sizeof shown, "%s", text);
}

#ifdef LINKED_STATICALLY
#pragma weak mova_set_debug_print

static void check_that_the_default_is_absent(void)
{
    CHECK(mova_set_debug_print == NULL);
}
#else
static void check_that_the_default_is_absent(void)
{
}
#endif

void check_messages(void)
{
    library_prints("printed");
    CHECK(strcmp(printed, "printed") == 0);
    library_warns("shown");
    CHECK(strcmp(shown, "shown") == 0);
    library_breaks();
    CHECK(breaks == 1);
    mova_dprintf("%d", 5);
    CHECK(strcmp(printed, "5") == 0);
    check_that_the_default_is_absent();
}
