#include "text.h"

#include <algorithm>

namespace atlas {

std::string printable(std::string_view text)
{
    std::string plain(text);
    std::replace_if(
        plain.begin(), plain.end(), [](char each) { return static_cast<unsigned char>(each) < ' ' || each == 127; },
        '?');
    return plain;
}

} // namespace atlas
