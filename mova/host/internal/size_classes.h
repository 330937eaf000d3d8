/* SPDX-License-Identifier: MIT */
/* Size classes: what a block of a given size occupies.

   Classes 0 to 128 serve the sizes up to 0, 8, 16 ... 1024. Above, each doubling has four classes, of which large blocks
   use only the last where there is address space to spare.

       small blocks, up to 1 KiB       in pages; the calls for them are short        page_heap.h
       page blocks, up to 16 KiB       in pages
       run blocks, up to 256 KiB       a run of units each                           run_blocks.h
       large blocks                    a mapping each                                large_blocks.h */
#ifndef MOVA_HOST_INTERNAL_SIZE_CLASSES_H
#define MOVA_HOST_INTERNAL_SIZE_CLASSES_H

#include <bit>
#include <cstddef>
#include <cstdint>

namespace mova::size_classes {

constexpr size_t step = 8, small_limit = 1024, page_limit = size_t{16} << 10, run_limit = size_t{256} << 10;
constexpr bool spare_address_space = sizeof(void *) >= 8;

constexpr unsigned small_classes = small_limit / step + 1;
constexpr unsigned in_a_doubling = 4;

/* The first doubling after the small sizes ends at twice their limit: 11 bits, in classes of 2^8 bytes. */
constexpr auto first_width = static_cast<unsigned>(std::bit_width(small_limit));
constexpr auto first_shift = static_cast<unsigned>(std::countr_zero(small_limit / in_a_doubling));

/* Requires a size of at most PTRDIFF_MAX. */
constexpr unsigned class_of(size_t size)
{
    if (size <= small_limit)
        return static_cast<unsigned>((size + step - 1) / step);
    const auto doubling = static_cast<unsigned>(std::bit_width(size - 1)) - first_width;
    if (spare_address_space && size > run_limit)
        return small_classes + doubling * in_a_doubling + in_a_doubling - 1;
    const auto part = static_cast<unsigned>((size - 1) >> (doubling + first_shift)) % in_a_doubling;
    return small_classes + doubling * in_a_doubling + part;
}

/* The largest size that the class serves. Each doubling begins after as many parts as it has. */
constexpr size_t largest_size(unsigned index)
{
    if (index < small_classes)
        return step * index;
    const unsigned doubling = (index - small_classes) / in_a_doubling, part = (index - small_classes) % in_a_doubling;
    return size_t{in_a_doubling + part + 1} << (first_shift + doubling);
}

/* What a block occupies. A block of size 0 is aligned as sizes that are a multiple of 16 are. */
constexpr size_t block_size(unsigned index)
{
    return index == 0 ? 16 : largest_size(index);
}

constexpr unsigned page_classes = class_of(page_limit) + 1, run_classes = class_of(run_limit) + 1,
                   all_classes = class_of(PTRDIFF_MAX) + 1;

constexpr bool is_large(unsigned index)
{
    return index >= run_classes;
}

/* Each class begins where the one before it ends, and serves what it says. */
constexpr bool classes_join()
{
    for (size_t size = 0, before = 0; size < PTRDIFF_MAX; before = size + 1) {
        size = largest_size(class_of(before));
        if (size < before || class_of(size) != class_of(before))
            return false;
        if (size < PTRDIFF_MAX && class_of(size + 1) <= class_of(size))
            return false;
    }
    return true;
}
static_assert(classes_join());

} // namespace mova::size_classes

#endif
