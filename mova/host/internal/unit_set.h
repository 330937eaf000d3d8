/* SPDX-License-Identifier: MIT */
/* Which units of a chunk are free. */
#ifndef MOVA_HOST_INTERNAL_UNIT_SET_H
#define MOVA_HOST_INTERNAL_UNIT_SET_H

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace mova {

constexpr size_t chunk_size = size_t{2} << 20, page_size = size_t{64} << 10, unit_size = 4096;

class unit_set {
public:
    static constexpr unsigned all = chunk_size / unit_size, in_a_page = page_size / unit_size;

    /* Returns the first unit from `from` on that is free, or is not; `all` if none is. */
    unsigned next_free(unsigned from) const { return next(from, 0); }
    unsigned next_taken(unsigned from) const { return next(from, ~uint64_t{0}); }

    /* Returns the first of a run of so many free units, or `all`. */
    unsigned find(unsigned wanted) const
    {
        for (unsigned first = next_free(0); first < all;) {
            const unsigned end = next_taken(first);
            if (end - first >= wanted)
                return first;
            first = next_free(end);
        }
        return all;
    }

    /* Returns the length of the longest run, or `enough` if there is one of that length. */
    unsigned longest(unsigned enough) const
    {
        unsigned most = 0;
        for (unsigned first = next_free(0); first < all && most < enough;) {
            const unsigned end = next_taken(first);
            most = std::max(most, end - first);
            first = next_free(end);
        }
        return std::min(most, enough);
    }

    /* Returns a bit for each page of 16 units, set where all of them are free. */
    uint32_t pages() const
    {
        static_assert(in_a_page == 16);
        uint32_t free = 0;
        for (unsigned word = 0; word < std::size(words_); ++word) {
            uint64_t bits = words_[word];
            for (unsigned joined = 1; joined < in_a_page; joined *= 2)
                bits &= bits >> joined;
            for (unsigned page = 0; page < 4; ++page)
                free |= static_cast<uint32_t>(bits >> page * in_a_page & 1) << (word * 4 + page);
        }
        return free;
    }

    /* Makes units free that are taken, or the reverse. */
    void turn(unsigned first, unsigned count)
    {
        for (const unsigned end = first + count; first < end;) {
            const unsigned here = std::min(64 - first % 64, end - first);
            words_[first / 64] ^= ~uint64_t{0} >> (64 - here) << first % 64;
            first += here;
        }
    }

private:
    unsigned next(unsigned from, uint64_t turned) const
    {
        if (from >= all)
            return all;
        unsigned word = from / 64;
        uint64_t bits = (words_[word] ^ turned) & ~uint64_t{0} << from % 64;
        while (bits == 0 && ++word < all / 64)
            bits = words_[word] ^ turned;
        return bits == 0 ? all : word * 64 + static_cast<unsigned>(std::countr_zero(bits));
    }

    uint64_t words_[all / 64] = {};
};

} // namespace mova

#endif
