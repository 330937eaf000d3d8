/* SPDX-License-Identifier: MIT */
#include "library.h"

#include <mova/frame/host.h>

void library_prints(const char *text)
{
    mova_dprintf("%s", text);
}

void library_warns(const char *text)
{
    MSG_Message(text);
}

void library_breaks(void)
{
    debug_break();
}

void library_raises(void)
{
    EX_raise_exception_line("library", 7, MOVA_ID_NOT_FOUND);
}
