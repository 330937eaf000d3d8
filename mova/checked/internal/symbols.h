/* SPDX-License-Identifier: MIT */
/* Where in the source an address is. */
#ifndef MOVA_CHECKED_INTERNAL_SYMBOLS_H
#define MOVA_CHECKED_INTERNAL_SYMBOLS_H

#include "registry.h"

namespace mova::checked {

struct source_place {
    char function[96]; /* "draw_borders", or the module where there is no debug information */
    char line[96];     /* "borders.cpp:41", or "+0x1234" in that module */
    bool has_line;     /* whether there is debug information */
    bool is_in_layer;  /* in a header of the typed layer */
};

/* The place of the call that returns to `where`. A place inside the typed layer is that of its caller, where the compiler put
   it inline. Loads the reader of debug information at the first call. */
source_place source_of(place where);

/* As source_of, without debug information: the module, and how far in it. */
source_place module_of(place where);

/* As source_of, of a call that runs: one that the typed layer makes is its caller's, also where it was not put inline. */
source_place source_of_running(place where);

/* The place of a call that runs, to be kept: of one that a function of the typed layer makes, which was not put inline, the place
   of that one's caller. Told by the names of functions, for which no debug information is loaded. */
place lasting_place(place where);

} // namespace mova::checked

#endif
