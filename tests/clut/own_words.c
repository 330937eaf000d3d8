/* SPDX-License-Identifier: MIT */
/* A program's own variables in the place of the library's. */
#include <mova/clut/colour_table.h>

int32_t clut_debug = 0;
int32_t GE_CLEAR, GE_WHITE, GE_BLACK, GE_RED, GE_LRED, GE_GREEN, GE_BLUE, GE_GRAY, GE_LGRAY, GE_GRAY144, GE_GRAY164,
    GE_CYAN, GE_MAG, GE_DRKGREEN, GE_DRKMAG, GE_DRKBLU, GE_DRKCYAN, GE_DRKGRAY, GE_SYS32;
