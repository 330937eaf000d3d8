/* SPDX-License-Identifier: MIT */
/* Blocks of the system's allocator, which valgrind and the sanitizers of a program watch. */
#ifndef MOVA_HOST_INTERNAL_SYSTEM_BLOCKS_H
#define MOVA_HOST_INTERNAL_SYSTEM_BLOCKS_H

#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include <malloc.h>

/* There where the program has a sanitizer. */
extern "C" {
[[gnu::weak]] int __asan_address_is_poisoned(const volatile void *address);
[[gnu::weak]] void __sanitizer_print_stack_trace();
}

namespace mova::system_blocks {

inline void *take(size_t size)
{
    return size % 16 != 0 ? std::malloc(size) : std::aligned_alloc(16, size);
}

/* Whether the allocator tells a block's size as it was asked for: under the tools. Else it tells what the block has room
   for. */
inline bool sizes_are_exact()
{
    void *block = std::malloc(1);
    const bool exact = malloc_usable_size(block) == 1;
    std::free(block);
    return exact;
}

/* A block that was released already is left to the tool to report. */
inline bool may_have_size(void *item, size_t size)
{
    static const bool exact = sizes_are_exact();
    if (size == 0 || !item || (__asan_address_is_poisoned && __asan_address_is_poisoned(item)))
        return true;
    const size_t known = malloc_usable_size(item);
    return exact ? known == size || known == 0 : known >= size;
}

inline void give(void *item, size_t size)
{
    if (!may_have_size(item, size)) {
        std::fprintf(stderr, "mova: a block of %zu bytes is released as one of %zu bytes\n", malloc_usable_size(item),
                     size);
        if (__sanitizer_print_stack_trace)
            __sanitizer_print_stack_trace();
        std::abort();
    }
    std::free(item);
}

} // namespace mova::system_blocks

#endif
