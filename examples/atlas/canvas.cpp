#include "canvas.h"

namespace atlas {

std::uint8_t Canvas::ink() const
{
    std::uint8_t top = 0;
    ES_inspect_top(pens_, &top);
    return top;
}

} // namespace atlas
