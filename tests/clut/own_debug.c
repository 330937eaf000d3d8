/* SPDX-License-Identifier: MIT */
/* A program's own debug level in the place of the library's. */
#include <mova/clut/colour_table.h>

int32_t clut_debug = 0;
