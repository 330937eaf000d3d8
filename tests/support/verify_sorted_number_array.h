#ifndef MOVA_TESTS_SUPPORT_VERIFY_SORTED_NUMBER_ARRAY_H
#define MOVA_TESTS_SUPPORT_VERIFY_SORTED_NUMBER_ARRAY_H

#include <mova/arrays/sorted_number_array.h>

#include <algorithm>
#include <functional>

namespace mova::test {

/* Returns the number, as the header gives it, of the invariant that the numbers of `array` break, or 0. */
inline int broken_invariant_of_numbers(const DA_array &array)
{
    const auto *numbers = static_cast<const int32_t *>(array.data);
    return std::adjacent_find(numbers, numbers + array.nitems, std::greater_equal<>()) == numbers + array.nitems ? 0
                                                                                                                 : 1;
}

} // namespace mova::test

#endif
