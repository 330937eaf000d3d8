/* SPDX-License-Identifier: MIT */
// mova::hash_table: a key is a pointer, an integer or an enumeration, no wider than a word: take mova::keyed_table
#include <mova/cxx/hash_table.h>
struct point {
    long x, y;
};
mova::hash_table<point, int> visits;
