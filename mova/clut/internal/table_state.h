/* SPDX-License-Identifier: MIT */
/* What the colour lookup table consists of, beside the words in its module record. */
#ifndef MOVA_CLUT_INTERNAL_TABLE_STATE_H
#define MOVA_CLUT_INTERNAL_TABLE_STATE_H

#include <mova/clut/colour_table.h>

namespace mova::clut {

enum : int32_t { free_index = 0, hard_index = 1, dynamic_index = 2 };

using colour = clut_colour;

struct table_state {
    int32_t size;
    int32_t dirty_index;
    int32_t *states; /* one word more than there are indices; the last stays free */
    colour *colours;
    CLUT_callback callback;
    mova_word client_word;
};

extern table_state table;

/* Puts another table in its place, before programs' eyes too. */
void use_table(const table_state &used);

} // namespace mova::clut

#endif
