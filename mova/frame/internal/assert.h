/* SPDX-License-Identifier: MIT */
/* How the library checks itself: by `assert` alone. Where NDEBUG is defined, as in release builds, nothing of it is left.

       assert(before->next == after);              what the body goes on to rely on
       assert(intact(broken_invariant(*list)));    a whole container, after an edit that costs as much

   A room's internal/ has a broken_invariant for each family: it allocates nothing and returns the number that the header
   gives the first invariant that is broken, or 0. */
#ifndef MOVA_FRAME_INTERNAL_ASSERT_H
#define MOVA_FRAME_INTERNAL_ASSERT_H

#include <cassert>
#include <cstdio>

namespace mova {

/* Whether no invariant is broken. Names the one that is, for the assertion that fails then. */
inline bool intact(int broken_invariant)
{
    if (broken_invariant != 0)
        std::fprintf(stderr, "invariant %d is broken\n", broken_invariant);
    return broken_invariant == 0;
}

} // namespace mova

#endif
