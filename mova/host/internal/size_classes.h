/* Size classes: what a block of a given size occupies. */
#ifndef MOVA_HOST_INTERNAL_SIZE_CLASSES_H
#define MOVA_HOST_INTERNAL_SIZE_CLASSES_H

#include <bit>
#include <cstddef>
#include <cstdint>

namespace mova::size_classes {

constexpr size_t small_limit = 1024, middle_limit = size_t{256} << 10;

/* Classes 0 to 128 serve the sizes up to 0, 8, 16 ... 1024. Above, each doubling has four, of which large blocks
   use only the last where there is address space to spare. */
constexpr unsigned small_classes = small_limit / 8 + 1;
constexpr bool spare_address_space = sizeof(void *) >= 8;

/* Requires a size of at most PTRDIFF_MAX. */
constexpr unsigned class_of(size_t size)
{
    if (size <= small_limit)
        return static_cast<unsigned>((size + 7) / 8);
    auto doubling = static_cast<unsigned>(std::bit_width(size - 1)) - 11;
    auto quarter = static_cast<unsigned>((size - 1) >> (doubling + 8)) % 4;
    if (spare_address_space && size > middle_limit)
        quarter = 3;
    return small_classes + doubling * 4 + quarter;
}

/* The largest size that the class serves. */
constexpr size_t largest_size(unsigned index)
{
    if (index < small_classes)
        return size_t{8} * index;
    return size_t{5 + (index - small_classes) % 4} << (8 + (index - small_classes) / 4);
}

/* What a block occupies. A block of size 0 is aligned as sizes that are a multiple of 16 are. */
constexpr size_t block_size(unsigned index)
{
    return index == 0 ? 16 : largest_size(index);
}

constexpr unsigned first_large_class = class_of(middle_limit) + 1, all_classes = class_of(PTRDIFF_MAX) + 1;

} // namespace mova::size_classes

#endif
