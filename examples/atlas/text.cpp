/* SPDX-License-Identifier: MIT */
#include "text.h"

#include <bit>
#include <cstdint>

namespace atlas {

struct Character {
    std::size_t bytes;
    std::uint32_t code_point;
};

/* Returns the character that the text begins with, of no bytes where it begins with none. */
static Character first_character(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
    const int ones = std::countl_one(static_cast<unsigned char>(text[0]));
    if (ones == 0)
        return {1, byte(0)};
    if (ones == 1 || ones > 4)
        return {0, 0};
    std::uint32_t code_point = byte(0) & (0x7fu >> ones);
    for (std::size_t i = 1; i < static_cast<std::size_t>(ones); ++i) {
        if (byte(i) >> 6 != 2)
            return {0, 0};
        code_point = code_point << 6 | (byte(i) & 63);
    }
    const std::uint32_t least[] = {0x80, 0x800, 0x10000};
    return {code_point < least[ones - 2] ? 0 : static_cast<std::size_t>(ones), code_point};
}

static bool is_plain(std::uint32_t code_point)
{
    const auto between = [=](std::uint32_t first, std::uint32_t last) {
        return code_point >= first && code_point <= last;
    };
    const bool control = code_point < ' ' || between(0x7f, 0x9f);
    const bool line_break = between(0x2028, 0x2029);
    const bool direction =
        code_point == 0x61c || between(0x200e, 0x200f) || between(0x202a, 0x202e) || between(0x2066, 0x2069);
    return !control && !line_break && !direction;
}

std::string printable(std::string_view text)
{
    std::string plain;
    while (!text.empty()) {
        const auto [bytes, code_point] = first_character(text);
        if (bytes > 0 && is_plain(code_point))
            plain += text.substr(0, bytes);
        else
            plain += '?';
        text.remove_prefix(bytes > 0 ? bytes : 1);
    }
    return plain;
}

} // namespace atlas
