/* SPDX-License-Identifier: MIT */
// mova::swap_cache: callbacks must have no state, for each entry keeps them as plain functions
#include <mova/cxx/swap_cache.h>
struct item {};
struct with_state : mova::item_callbacks {
    int state;
};
mova::swap_cache<item, char, with_state> cache(nullptr);
