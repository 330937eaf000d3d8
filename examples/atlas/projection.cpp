/* SPDX-License-Identifier: MIT */
#include "projection.h"

#include <algorithm>

namespace atlas {

Pixel project(Point point, int width, int height)
{
    const std::int64_t right = std::int64_t{point.longitude} + 180 * degree;
    const std::int64_t down = std::int64_t{90} * degree - point.latitude;
    const std::int64_t globe = std::int64_t{360} * degree;
    return {static_cast<int>(std::min<std::int64_t>(right * width / globe, width - 1)),
            static_cast<int>(std::min<std::int64_t>(down * height * 2 / globe, height - 1))};
}

} // namespace atlas
