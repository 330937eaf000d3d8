/* SPDX-License-Identifier: MIT */
/* Memory of the system for the blocks of a pool, which lies at another address from time to time. What a view has left can be
   neither read nor written, until so many others were left that its addresses are needed again. For one thread at a time. */
#ifndef MOVA_CHECKED_HOST_VIEWS_H
#define MOVA_CHECKED_HOST_VIEWS_H

#include <cstddef>

namespace mova::checked {

/* A view of so many bytes, or null. */
char *make_view(size_t bytes);

/* Returns the address of the same bytes from now on. Where the system cannot, it is the old one. */
char *move_view(char *view, size_t bytes, const void *where);

void leave_view(char *view, size_t bytes, const void *where);

} // namespace mova::checked

#endif
