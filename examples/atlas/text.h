/* SPDX-License-Identifier: MIT */
/* Text of any bytes, in a dynamic array. */
#ifndef ATLAS_TEXT_H
#define ATLAS_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include <mova/arrays/dynamic_array.h>

namespace atlas {

class Text {
public:
    Text() : bytes_(DA_create(1, increment)) {}
    explicit Text(std::string_view text) : Text()
    {
        DA_append(bytes_, text.data(), static_cast<std::int32_t>(text.size()));
    }
    Text(Text &&other) noexcept : bytes_(std::exchange(other.bytes_, nullptr)) {}
    Text &operator=(Text &&other) noexcept
    {
        std::swap(bytes_, other.bytes_);
        return *this;
    }
    ~Text() { DA_release(bytes_); }

    std::string_view view() const { return {c_str(), static_cast<std::size_t>(DA_nitems(bytes_))}; }
    /* Ends at the first zero byte, of which the text may have several. */
    const char *c_str() const { return DA_string(bytes_); }
    bool empty() const { return DA_nitems(bytes_) == 0; }

private:
    static constexpr std::int32_t increment = 16;

    DA_array *bytes_;
};

/* Returns the text as a terminal may be given it: one plain line, written from one side to the other. A question mark stands
   for each control character, of 7 or 8 bits, for each that breaks lines or turns the direction, and for each byte that is
   no UTF-8. */
std::string printable(std::string_view text);

} // namespace atlas

#endif
