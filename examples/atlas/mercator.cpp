/* SPDX-License-Identifier: MIT */
#include <bit>
#include <cstdlib>

#include "shapes.h"

namespace atlas {

constexpr int log_bits = 28;

/* Returns the logarithm to the base 2 of a number from 1 to 2^32 - 1, times 2^log_bits. The mantissa lies from 1 up to 2, in units
   of 2^-31; squaring it shows one bit more of its logarithm. */
static std::int64_t logarithm(std::uint64_t number)
{
    const int whole = 63 - std::countl_zero(number);
    std::int64_t result = whole;
    std::uint64_t mantissa = number << (31 - whole);
    for (int bit = 0; bit < log_bits; ++bit) {
        mantissa = mantissa * mantissa >> 31;
        const std::uint64_t is_two = mantissa >> 32;
        mantissa >>= is_two;
        result = result * 2 + static_cast<std::int64_t>(is_two);
    }
    return result;
}

/* The projection takes a latitude to artanh(sine), and pi to the edge, which is drawn at 90°:

       degrees = 90 / pi * artanh(sine) = 45 * ln 2 / pi * (log2(1 + sine) - log2(1 - sine)) */
Angle mercator(Angle latitude)
{
    const std::int64_t degrees_per_log = 333148601; /* in angles, times 2^3 */
    const std::int64_t one = std::int64_t{1} << sine_bits;
    const std::int64_t up = sine(std::abs(latitude));
    const std::int64_t logs = logarithm(static_cast<std::uint64_t>(one + up)) -
                              logarithm(static_cast<std::uint64_t>(std::max<std::int64_t>(one - up, 1)));
    const std::int64_t angle = std::min(logs * degrees_per_log >> (log_bits + 3), std::int64_t{180} * degree);
    return static_cast<Angle>(latitude < 0 ? -angle : angle);
}

} // namespace atlas
