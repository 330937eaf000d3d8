/* SPDX-License-Identifier: MIT */
/* A program that names the colour table's variables. It sets the debug level before the library's own start, and again
   while it runs, and reads the index words before and after the library assigns them. */
#include <string.h>

#include <mova/clut/colour_table.h>
#include <mova/host/messages.h>

#include <tests/c_api/check.h>

static char text[80];

static void keep_text(const char *received)
{
    strncpy(text, received, sizeof text - 1);
}

static void set_level_early(void)
{
    clut_debug = 1;
}

/* Called before every library is initialised. */
__attribute__((section(".preinit_array"), used)) static void (*early)(void) = set_level_early;

static void check_words(int32_t first, int32_t step)
{
    const int32_t words[] = {GE_WHITE,   GE_CLEAR, GE_BLACK,   GE_RED,     GE_LRED,     GE_BLUE,   GE_LGRAY,
                             GE_GRAY,    GE_GREEN, GE_CYAN,    GE_MAG,     GE_DRKGREEN, GE_DRKMAG, GE_DRKBLU,
                             GE_DRKGRAY, GE_SYS32, GE_GRAY144, GE_GRAY164, GE_DRKCYAN};
    for (int i = 0; i < 19; ++i)
        CHECK(words[i] == first + i * step);
}

int main(void)
{
    CHECK(clut_debug == 1);
    check_words(0, 0);
    mova_set_debug_print(keep_text);
    RGBLUT_init(64, NULL, 0);
    CHECK(strcmp(text, "CLUT alloc 38\n") == 0);
    check_words(20, 1);
    clut_debug = 2;
    CLUT_set(GE_RED, 1, 2, 3);
    CHECK(strcmp(text, "set index : 23 : 1 2 3\n") == 0);
    clut_debug = 0;
    CLUT_new_index();
    CHECK(strcmp(text, "set index : 23 : 1 2 3\n") == 0);
    return 0;
}
