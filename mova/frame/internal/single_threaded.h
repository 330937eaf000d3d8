/* SPDX-License-Identifier: MIT */
#ifndef MOVA_FRAME_INTERNAL_SINGLE_THREADED_H
#define MOVA_FRAME_INTERNAL_SINGLE_THREADED_H

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

namespace mova {

/* Whether the C library knows that the process has a single thread, which needs no lock. */
inline bool single_threaded()
{
#if __has_include(<sys/single_threaded.h>)
    return __libc_single_threaded;
#else
    return false;
#endif
}

} // namespace mova

#endif
