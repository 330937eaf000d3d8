/* SPDX-License-Identifier: MIT */
/* Elements for the arrays' tests: 12 bytes, each named by a letter. */
#ifndef MOVA_TESTS_ARRAYS_LETTERS_H
#define MOVA_TESTS_ARRAYS_LETTERS_H

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace mova::test {

using element = std::array<char, 12>;

inline element named(char name)
{
    element made;
    made.fill(name);
    return made;
}

/* '.' for an element of zeroes, '?' for one that a fresh block has. */
inline char name_of_element(const void *bytes)
{
    element read;
    std::memcpy(&read, bytes, sizeof read);
    EXPECT_EQ(read, named(read[0])) << "an element is torn";
    return read[0] == 0 ? '.' : read[0] == '\xCD' ? '?' : read[0];
}

inline std::string names_of(const void *data, int32_t count)
{
    std::string names;
    for (int32_t i = 0; i < count; ++i)
        names += name_of_element(static_cast<const element *>(data) + i);
    return names;
}

/* The elements with these names, one after the other. */
inline std::vector<element> elements_named(const std::string &names)
{
    std::vector<element> made;
    for (char name : names)
        made.push_back(named(name));
    return made;
}

/* "12", "24": the bytes of that many elements, as in the host's log. */
inline std::string bytes_of_elements(int32_t count)
{
    return std::to_string(static_cast<std::size_t>(count) * sizeof(element));
}

/* Elements of any size, all different: byte k of element i is 7i + k. */
inline std::vector<uint8_t> distinct_elements(std::size_t size, int32_t count)
{
    std::vector<uint8_t> bytes;
    for (int32_t i = 0; i < count; ++i) {
        for (std::size_t k = 0; k < size; ++k)
            bytes.push_back(static_cast<uint8_t>(7 * i + static_cast<int32_t>(k)));
    }
    return bytes;
}

/* The same elements in another order: element i of the result is element index_of(i). */
template <class IndexOf>
std::vector<uint8_t> picked(const std::vector<uint8_t> &bytes, std::size_t size, int32_t count, IndexOf index_of)
{
    std::vector<uint8_t> result;
    for (int32_t i = 0; i < count; ++i) {
        const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(size) * index_of(i);
        result.insert(result.end(), from, from + static_cast<std::ptrdiff_t>(size));
    }
    return result;
}

/* The sizes that are moved in ways of their own, and others. */
constexpr std::array<uint32_t, 7> every_size = {1, 3, 4, 8, 12, 16, 40};

} // namespace mova::test

#endif
