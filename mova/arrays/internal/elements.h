/* SPDX-License-Identifier: MIT */
/* What the arrays share: copying, moving, reversing and rolling runs of elements of one size. Elements are bytes; runs of
   them move as whole blocks. Counts and indices are elements, not negative. */
#ifndef MOVA_ARRAYS_INTERNAL_ELEMENTS_H
#define MOVA_ARRAYS_INTERNAL_ELEMENTS_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include <mova/frame/inline/copy_element.h>

namespace mova {

/* Multiplied as size_t: an array may be larger than 4 GiB. */
inline size_t bytes_of(int32_t count, uint32_t element_size)
{
    return static_cast<size_t>(count) * element_size;
}

/* The elements that lie from `data` on. It owns nothing. */
class elements {
public:
    elements(void *data, uint32_t element_size) : data_(static_cast<char *>(data)), size_(element_size) {}

    char *at(int32_t index) const { return data_ + bytes_of(index, size_); }

    void put(int32_t index, const void *element) const { mova_copy_element(at(index), element, size_); }

    /* Copies `count` elements in, from elsewhere. */
    void write(int32_t index, const void *source, int32_t count) const
    {
        if (count == 1)
            put(index, source);
        else if (count > 0)
            std::memcpy(at(index), source, bytes_of(count, size_));
    }

    /* Copies `count` elements out, one at least. */
    void read(void *target, int32_t index, int32_t count) const
    {
        std::memcpy(target, at(index), bytes_of(count, size_));
    }

    /* Moves `count` elements; where they were and where they go may overlap. */
    void move(int32_t to, int32_t from, int32_t count) const
    {
        if (count)
            std::memmove(at(to), at(from), bytes_of(count, size_));
    }

    /* Reverses the first `count` elements. Takes a buffer of one element from the host, even where there is nothing to
       swap. */
    void reverse(int32_t count) const;

    /* Makes element `n` the first of `count`: element i is then what element (i + n) modulo `count` was. Takes a buffer
       of the smaller of the two pieces from the host; none where everything stays. Requires `count` > 0. */
    void roll(int32_t count, int32_t n) const;

private:
    char *data_;
    uint32_t size_;
};

} // namespace mova

#endif
