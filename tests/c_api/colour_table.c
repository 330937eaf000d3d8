/* SPDX-License-Identifier: MIT */
#include <string.h>

#include <mova/clut/colour_table.h>
#include <mova/host/messages.h>

#include "c_api.h"
#include "check.h"

static char text[400];
static int32_t told_index;

static void keep_text(const char *received)
{
    strncat(text, received, sizeof text - strlen(text) - 1);
}

static void tell(int32_t index, int16_t red, int16_t green, int16_t blue)
{
    CHECK(red >= 0 && green >= 0 && blue >= 0);
    told_index = index;
}

static void check_colour(int32_t index, int red, int green, int blue)
{
    int16_t r, g, b;
    CLUT_get(index, &r, &g, &b);
    CHECK(r == red && g == green && b == blue);
}

static void standard_colours(void)
{
    CHECK(GE_WHITE == 0);
    CHECK(clut_shown.size == 0);
    RGBLUT_init(64, tell, (mova_word)&told_index);
    CHECK(clut_shown.size == 64 && clut_shown.first[GE_MAG].red == 189);
    CHECK(told_index == GE_DRKCYAN);
    const int32_t indices[] = {GE_WHITE,   GE_CLEAR, GE_BLACK,   GE_RED,     GE_LRED,     GE_BLUE,   GE_LGRAY,
                               GE_GRAY,    GE_GREEN, GE_CYAN,    GE_MAG,     GE_DRKGREEN, GE_DRKMAG, GE_DRKBLU,
                               GE_DRKGRAY, GE_SYS32, GE_GRAY144, GE_GRAY164, GE_DRKCYAN};
    for (int i = 0; i < 19; ++i)
        CHECK(indices[i] == 20 + i);
    check_colour(GE_MAG, 189, 0, 189);
}

static void hard_indices(void)
{
    CLUT_alloc(60);
    CLUT_set(61, 1, 2, 3);
    CLUT_set_RGB(60, 1.0F, 0.5F, 0.0F);
    check_colour(60, 255, 127, 0);
    CLUT_copy(60, 61);
    CHECK(told_index == 60);
    check_colour(60, 1, 2, 3);
}

static void dynamic_indices(void)
{
    CHECK(CLUT_new_index() == 40);
    CHECK(CLUT_new_index() == 41);
    CLUT_release_index(40);
    CHECK(CLUT_new_index() == 40);
}

static void texts(void)
{
    const mova_text_fn before = mova_set_debug_print(keep_text);
    CLUT_statistics();
    CHECK(strcmp(text, "Clut Size : 64\nFirst Free index : 41\nDirty index : 39\nNumber of free indices : 21\n"
                       "Number of hard indices : 40\nNumber of dynamic indices : 3\n") == 0);
    text[0] = 0;
    clut_debug = 2;
    check_colour(GE_RED, 255, 0, 0);
    clut_debug = 0;
    CHECK(strcmp(text, "get index : 23 : 255 0 0\n") == 0);
    mova_set_debug_print(before);
}

void drive_colour_table(void)
{
    standard_colours();
    hard_indices();
    dynamic_indices();
    texts();
}
