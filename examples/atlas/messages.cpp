/* SPDX-License-Identifier: MIT */
#include "messages.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace atlas {

/* ---- plain text ---- */

Character first_character(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<std::uint8_t>(text[i]) : 0u; };
    const auto bytes = static_cast<std::size_t>(std::countl_one(static_cast<std::uint8_t>(byte(0))));
    if (bytes == 0)
        return {1, byte(0)};
    if (bytes == 1 || bytes > 4)
        return {0, 0};
    std::uint32_t code_point = byte(0) & (0x7fu >> bytes);
    for (std::size_t i = 1; i < bytes; ++i) {
        if (byte(i) >> 6 != 2)
            return {0, 0};
        code_point = code_point << 6 | (byte(i) & 63);
    }
    constexpr std::uint32_t least[] = {0x80, 0x800, 0x10000};
    if (code_point < least[bytes - 2] || code_point > 0x10ffff || code_point >> 11 == 0x1b)
        return {0, 0}; /* too long, too large, or half of a pair */
    return {bytes, code_point};
}

/* Controls, what breaks lines, and all that Unicode calls format characters, which turn the direction, join, split or hide: from
   the first to the last of each pair. */
constexpr std::pair<std::uint32_t, std::uint32_t> not_plain[] = {
    {0, 0x1f},          {0x7f, 0x9f},       {0xad, 0xad},       {0x600, 0x605},     {0x61c, 0x61c},
    {0x6dd, 0x6dd},     {0x70f, 0x70f},     {0x890, 0x891},     {0x8e2, 0x8e2},     {0x180e, 0x180e},
    {0x200b, 0x200f},   {0x2028, 0x202e},   {0x2060, 0x206f},   {0xfeff, 0xfeff},   {0xfff9, 0xfffb},
    {0x110bd, 0x110bd}, {0x110cd, 0x110cd}, {0x13430, 0x1343f}, {0x1bca0, 0x1bca3}, {0x1d173, 0x1d17a},
    {0xe0000, 0xe007f}};

std::string printable(std::string_view text)
{
    std::string plain;
    while (!text.empty()) {
        const Character next = first_character(text);
        const bool is_plain =
            next.bytes > 0 && std::none_of(std::begin(not_plain), std::end(not_plain), [=](auto range) {
                return next.code_point >= range.first && next.code_point <= range.second;
            });
        plain += is_plain ? text.substr(0, next.bytes) : "?";
        text.remove_prefix(std::max<std::size_t>(next.bytes, 1));
    }
    return plain;
}

/* ---- progress ---- */

constexpr std::chrono::milliseconds patience{500};
constexpr std::chrono::milliseconds interval{100};

ProgressLine::ProgressLine(std::FILE *out, bool shown, Clock now)
    : out_(out), shown_(shown), now_(std::move(now)), due_(now_() + patience)
{
}

void ProgressLine::update(const char *step, std::size_t done, std::size_t all)
{
    if (!shown_ || now_() < due_)
        return;
    due_ = now_() + interval;
    clear();
    const std::uint64_t percent = all ? std::uint64_t{100} * done / all : 100;
    line_ = "atlas: " + std::string(step) + " " + std::to_string(percent) + " %";
    std::fputs(line_.c_str(), out_);
    std::fflush(out_);
}

void ProgressLine::clear()
{
    if (line_.empty())
        return;
    std::fprintf(out_, "\r%*s\r", static_cast<int>(line_.size()), "");
    std::fflush(out_);
    line_.clear();
}

} // namespace atlas
