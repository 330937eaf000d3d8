/* SPDX-License-Identifier: MIT */
/* What valgrind and the address sanitizer are told of a pool's memory: in libmova_host_system that nobody may touch the gaps
   between blocks, else nothing. */
#ifndef MOVA_HOST_INTERNAL_GAP_MARKS_H
#define MOVA_HOST_INTERNAL_GAP_MARKS_H

#include <cstddef>

#if defined MOVA_MEMORY_OF_SYSTEM && __has_include(<valgrind/memcheck.h>)
#include <valgrind/memcheck.h>
#else
#define VALGRIND_MAKE_MEM_NOACCESS(start, size) static_cast<void>(0)
#define VALGRIND_MAKE_MEM_UNDEFINED(start, size) static_cast<void>(0)
#endif

/* There where the program has the sanitizer. */
extern "C" {
[[gnu::weak]] void __asan_poison_memory_region(const volatile void *start, size_t size);
[[gnu::weak]] void __asan_unpoison_memory_region(const volatile void *start, size_t size);
}

namespace mova::gap_marks {

#ifdef MOVA_MEMORY_OF_SYSTEM
constexpr bool are_made = true;
#else
constexpr bool are_made = false;
#endif

inline void hide([[maybe_unused]] const char *start, [[maybe_unused]] size_t size)
{
    if constexpr (are_made) {
        if (__asan_poison_memory_region)
            __asan_poison_memory_region(start, size);
        VALGRIND_MAKE_MEM_NOACCESS(start, size);
    }
}

/* What is there is as good as never written. */
inline void show([[maybe_unused]] const char *start, [[maybe_unused]] size_t size)
{
    if constexpr (are_made) {
        if (__asan_unpoison_memory_region)
            __asan_unpoison_memory_region(start, size);
        VALGRIND_MAKE_MEM_UNDEFINED(start, size);
    }
}

} // namespace mova::gap_marks

#endif
