/* SPDX-License-Identifier: MIT */
#include "labels.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace atlas {

/* Seven rows of five dots each, from the left; the last row is in the lowest five bits. */
static constexpr std::string_view glyphs = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 .,-'()&/?";
static constexpr std::uint64_t dots[] = {
    0x3a31fc631, 0x7a31f463e, 0x3a308422e, 0x7a318c63e, 0x7e10f421f, 0x7e10f4210, 0x3a30bc62e, 0x4631fc631,
    0x7c842109f, 0x1c4210a4c, 0x4654c5251, 0x42108421f, 0x4775ac631, 0x47359c631, 0x3a318c62e, 0x7a31f4210,
    0x3a318d64d, 0x7a31f5251, 0x3e107043e, 0x7c8421084, 0x46318c62e, 0x46318c544, 0x4631ad771, 0x462a22a31,
    0x462a21084, 0x7c222221f, 0x3a33ae62e, 0x11842108e, 0x3a211111f, 0x7c441062e, 0x08ca97c42, 0x7e1e0862e,
    0x1910f462e, 0x7c2222108, 0x3a317462e, 0x3a317844c, 0x000000000, 0x00000018c, 0x000003088, 0x000070000,
    0x108800000, 0x088842082, 0x208210888, 0x32544564d, 0x042222210, 0x01ca529c0};
static_assert(glyphs.size() == std::size(dots));

static std::size_t place_of(char glyph)
{
    return std::min(glyphs.find(glyph), glyphs.find(unknown_glyph));
}

bool has_dot(char glyph, int column, int row)
{
    return dots[place_of(glyph)] >> ((glyph_height - row) * glyph_width - 1 - column) & 1;
}

/* The letters from U+00C0 to U+017F without their accents. A small letter stands for the two capitals at its place. */
static constexpr std::string_view base_letters = "AAAAAAaCEEEEIIIIDNOOOOO?OUUUUYts"
                                                 "AAAAAAaCEEEEIIIIDNOOOOO?OUUUUYtY"
                                                 "AAAAAACCCCCCCCDDDDEEEEEEEEEEGGGGGGGGHHHHIIIIIIIIIIiiJJKKK"
                                                 "LLLLLLLLLLNNNNNNNNNOOOOOOooRRRRRRSSSSSSSSTTTTTTUUUUUUUUUUUU"
                                                 "WWYYYZZZZZZS";
constexpr unsigned first_base = 0xC0;
static_assert(base_letters.size() == 0x180 - first_base);
constexpr std::string_view pairs = "aiost";
constexpr std::string_view both_capitals[] = {"AE", "IJ", "OE", "SS", "TH"};

std::string as_glyphs(std::string_view text)
{
    std::string result;
    for (; !text.empty(); text.remove_prefix(std::max<std::size_t>(first_character(text).bytes, 1))) {
        const auto [bytes, code_point] = first_character(text);
        if (code_point >= first_base && code_point - first_base < base_letters.size()) {
            const char letter = base_letters[code_point - first_base];
            const std::size_t pair = pairs.find(letter);
            result += pair == pairs.npos ? std::string_view(&letter, 1) : both_capitals[pair];
        } else {
            const char letter = bytes == 1 ? text[0] : unknown_glyph;
            result += glyphs[place_of(static_cast<char>(std::toupper(static_cast<unsigned char>(letter))))];
        }
    }
    return result;
}

} // namespace atlas
