/* SPDX-License-Identifier: MIT */
/* Classes of gaps by size, and which of them have any: how a gap that is large enough is found without a search. */
#ifndef MOVA_HOST_INTERNAL_GAP_CLASSES_H
#define MOVA_HOST_INTERNAL_GAP_CLASSES_H

#include <bit>
#include <cstddef>
#include <cstdint>

namespace mova::gap_classes {

constexpr size_t unit = 16;

/* Below 1024 units each number of them has a class of its own; above, each doubling has 32 classes. */
constexpr unsigned singles = 1024, in_a_doubling = 32;
constexpr auto first_shift = static_cast<unsigned>(std::countr_zero(singles / in_a_doubling));

/* Of a size that is a multiple of the unit. */
constexpr unsigned class_of(size_t size)
{
    const size_t units = size / unit;
    if (units < singles)
        return static_cast<unsigned>(units);
    const auto doubling = static_cast<unsigned>(std::bit_width(units) - std::bit_width(singles));
    return singles + doubling * in_a_doubling +
           static_cast<unsigned>(units >> (doubling + first_shift)) % in_a_doubling;
}

constexpr unsigned count = class_of(SIZE_MAX) + 1;

/* So many of the lowest bits of a number of units may be what they want in the class. */
constexpr unsigned open_bits(unsigned index)
{
    return index < singles ? 0 : (index - singles) / in_a_doubling + first_shift;
}
static_assert(class_of(singles * unit) == class_of((singles + (1 << first_shift) - 1) * unit));
static_assert(class_of(singles * unit) + 1 == class_of((singles + (1 << first_shift)) * unit));

/* The numbers of the classes that have a gap. */
class class_set {
public:
    void insert(unsigned index)
    {
        words_[index / 64] |= bit(index);
        filled_ |= bit(index / 64);
    }

    void erase(unsigned index)
    {
        words_[index / 64] &= ~bit(index);
        if (words_[index / 64] == 0)
            filled_ &= ~bit(index / 64);
    }

    /* Returns the first class from `index` on that has a gap, or `count`. */
    unsigned first_from(unsigned index) const
    {
        unsigned word = index / 64;
        uint64_t bits = words_[word] & -bit(index);
        if (bits == 0) {
            const uint64_t after = filled_ & ~(bit(word) | (bit(word) - 1));
            if (after == 0)
                return count;
            word = static_cast<unsigned>(std::countr_zero(after));
            bits = words_[word];
        }
        return word * 64 + static_cast<unsigned>(std::countr_zero(bits));
    }

private:
    static constexpr uint64_t bit(unsigned index) { return uint64_t{1} << index % 64; }

    uint64_t words_[count / 64 + 1] = {};
    uint64_t filled_ = 0; /* a bit for each word that has any */
    static_assert(count / 64 + 1 <= 64);
};

} // namespace mova::gap_classes

#endif
