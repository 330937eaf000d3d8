/* SPDX-License-Identifier: MIT */
/* What is said at the end of the program. */
#ifndef MOVA_CHECKED_INTERNAL_CLOSING_H
#define MOVA_CHECKED_INTERNAL_CLOSING_H

#include "registry.h"

namespace mova::checked {

struct tally {
    size_t containers, blocks;
};

/* Looks once more at every block of the checked host; where leaks are asked for, lists what lives, by where it was made.
   Returns how much that is. */
tally close_program(bool lists_leaks);

} // namespace mova::checked

#endif
