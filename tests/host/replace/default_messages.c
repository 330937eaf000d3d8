/* SPDX-License-Identifier: MIT */
#include "groups.h"

#include <string.h>

#include <mova/frame/host.h>
#include <mova/host/messages.h>

#include "library.h"

static char received[100];

static void receive(const char *text)
{
    snprintf(received, sizeof received, "%s", text);
}

void check_messages(void)
{
    mova_set_debug_print(receive);
    library_prints("printed");
    CHECK(strcmp(received, "printed") == 0);
    mova_dprintf("%d", 5);
    CHECK(strcmp(received, "5") == 0);
    mova_set_message(receive);
    library_warns("shown");
    CHECK(strcmp(received, "shown") == 0);
    library_breaks();
}
