/* SPDX-License-Identifier: MIT */
/* Division of whole numbers that rounds alike on both sides of zero. */
#ifndef ATLAS_DIVISION_H
#define ATLAS_DIVISION_H

#include <cstdint>

namespace atlas {

/* Rounds downwards. Requires a positive divisor. */
constexpr std::int64_t floor_divided(std::int64_t dividend, std::int64_t divisor)
{
    return dividend / divisor - (dividend % divisor < 0);
}

/* Rounds upwards. Requires a positive divisor. */
constexpr std::int64_t ceil_divided(std::int64_t dividend, std::int64_t divisor)
{
    return dividend / divisor + (dividend % divisor > 0);
}

} // namespace atlas

#endif
