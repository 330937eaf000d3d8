/* SPDX-License-Identifier: MIT */
/* Bodies of functions of mova/clut/colour_table.h, where their contracts are. mova/frame/inline.h says what the marks mean. */
#ifndef MOVA_CLUT_INLINE_COLOUR_TABLE_H
#define MOVA_CLUT_INLINE_COLOUR_TABLE_H

#include <mova/clut/colour_table.h>
#include <mova/frame/inline.h>

#ifdef __cplusplus
extern "C" {
#endif

#ifndef MOVA_OWN_COLOUR_TABLE

extern void mova_clut_call_get(int32_t index, int16_t *red, int16_t *green, int16_t *blue) MOVA_CALL(CLUT_get);

/* An index of the table, where nothing is to be printed. */
MOVA_SHORTCUT void CLUT_get(int32_t index, int16_t *red, int16_t *green, int16_t *blue)
{
    clut_colour found;
    if (MOVA_CAST(uint32_t, index) >= MOVA_CAST(uint32_t, clut_shown.size) || clut_debug >= 2) {
        mova_clut_call_get(index, red, green, blue);
        return;
    }
    MOVA_ASSERT(clut_shown.first);
    found = clut_shown.first[index];
    *red = found.red;
    *green = found.green;
    *blue = found.blue;
}

#endif

#ifdef __cplusplus
}
#endif

#endif
