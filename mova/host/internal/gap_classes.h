/* Classes of gaps by size, and which of them have any: how a gap that is large enough is found without a search. */
#ifndef MOVA_HOST_INTERNAL_GAP_CLASSES_H
#define MOVA_HOST_INTERNAL_GAP_CLASSES_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace mova::gap_classes {

constexpr size_t unit = 16;

/* Up to 63 units each number of them has a class of its own; above, each doubling has 32 classes. */
constexpr unsigned in_a_doubling = 32, singles = 2 * in_a_doubling;

/* Of a size that is a multiple of the unit. */
constexpr unsigned class_of(size_t size)
{
    const size_t units = size / unit;
    const unsigned doublings = static_cast<unsigned>(std::countl_zero(size_t{singles - 1})) -
                               static_cast<unsigned>(std::countl_zero(units | (singles - 1)));
    return doublings * in_a_doubling + static_cast<unsigned>(units >> doublings);
}

constexpr unsigned count = class_of(SIZE_MAX) + 1;

/* The numbers of the classes that have a gap. */
class class_set {
public:
    void insert(unsigned index) { words_[index / 64] |= bit(index); }
    void erase(unsigned index) { words_[index / 64] &= ~bit(index); }

    /* Returns the first class from `index` on that has a gap, or `count`. */
    unsigned first_from(unsigned index) const
    {
        unsigned word = index / 64;
        uint64_t bits = words_[word] & -bit(index);
        while (!bits && ++word < std::size(words_))
            bits = words_[word];
        return bits ? word * 64 + static_cast<unsigned>(std::countr_zero(bits)) : count;
    }

private:
    static constexpr uint64_t bit(unsigned index) { return uint64_t{1} << index % 64; }

    uint64_t words_[count / 64 + 1] = {};
};

} // namespace mova::gap_classes

#endif
