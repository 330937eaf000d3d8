/* SPDX-License-Identifier: MIT */
/* A colour of one's own beside the standard ones. */
#include <mova/clut/colour_table.h>
#include <stdio.h>

static void print(const char *name, int32_t index)
{
    int16_t red, green, blue;
    CLUT_get(index, &red, &green, &blue);
    printf("%s: index %d shows %d %d %d\n", name, (int)index, red, green, blue);
}

int main(void)
{
    RGBLUT_init(0, NULL, 0);
    const int32_t sand = CLUT_new_index();
    CLUT_set(sand, 194, 178, 128);
    print("white", GE_WHITE);
    print("sand", sand);
    CLUT_release_index(sand);
}
