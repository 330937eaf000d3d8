/* SPDX-License-Identifier: MIT */
#include <string.h>

#include <mova/frame/host.h>
#include <mova/host/messages.h>

#include "c_api.h"
#include "check.h"

static char text[80];

static void keep_text(const char *received)
{
    snprintf(text, sizeof text, "%s", received);
}

void drive_messages(void)
{
    CHECK(mova_set_debug_print(keep_text) == NULL);
    mova_dprintf("%d nodes\n", 3);
    CHECK(strcmp(text, "3 nodes\n") == 0);
    CHECK(mova_set_message(keep_text) == NULL);
    MSG_Message("full");
    CHECK(strcmp(text, "full") == 0);
    debug_break();
}
