/* SPDX-License-Identifier: MIT */
/* Where in the source an address is. */
#ifndef MOVA_CHECKED_INTERNAL_SYMBOLS_H
#define MOVA_CHECKED_INTERNAL_SYMBOLS_H

#include "registry.h"

namespace mova::checked {

struct source_place {
    char function[96]; /* "draw_borders", or the module where there is no debug information */
    char line[96];     /* "borders.cpp:41", or "+0x1234" in that module */
};

/* The place of the call that returns to `where`. A place inside the typed layer is that of its caller, where the compiler put
   it inline. Loads the reader of debug information at the first call. */
source_place source_of(place where);

} // namespace mova::checked

#endif
