/* SPDX-License-Identifier: MIT */
/* What the models of the arrays are made of: elements as vectors of bytes. */
#ifndef MOVA_TESTS_MODEL_ELEMENT_VECTOR_H
#define MOVA_TESTS_MODEL_ELEMENT_VECTOR_H

#include <tests/support/byte_source.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace mova::test {

using raw_element = std::vector<uint8_t>;
using element_vector = std::vector<raw_element>;

/* Those that are moved in ways of their own, and others. */
constexpr std::array<std::size_t, 6> element_sizes = {1, 3, 4, 8, 12, 16};

/* Of few values, so that elements are equal to each other; no two bytes of one are alike. */
inline raw_element element_of(std::size_t size, std::size_t value)
{
    raw_element made(size);
    for (std::size_t i = 0; i < size; ++i)
        made[i] = static_cast<uint8_t>(value * 32 + i);
    return made;
}

inline raw_element elements_in_a_row(const element_vector &elements)
{
    raw_element bytes;
    for (const raw_element &element : elements)
        bytes.insert(bytes.end(), element.begin(), element.end());
    return bytes;
}

inline void require_elements(const void *data, const element_vector &elements)
{
    const raw_element bytes = elements_in_a_row(elements);
    require(bytes.empty() || std::memcmp(data, bytes.data(), bytes.size()) == 0, "another element");
}

/* Where element n becomes the first of `count`: an index from 0 on. */
inline std::size_t first_after_roll(std::size_t count, int32_t n)
{
    const auto signed_count = static_cast<int64_t>(count);
    return static_cast<std::size_t>((n % signed_count + signed_count) % signed_count);
}

inline void roll(element_vector &elements, std::size_t count, std::size_t first)
{
    const auto begin = elements.begin();
    std::rotate(begin, begin + static_cast<std::ptrdiff_t>(first), begin + static_cast<std::ptrdiff_t>(count));
}

} // namespace mova::test

#endif
