#include "picture.h"

#include <algorithm>

namespace atlas {

static std::vector<Area> areas_of(Size size)
{
    std::vector<Area> areas;
    for (int top = 0; top < size.height; top += tile_size.height) {
        for (int left = 0; left < size.width; left += tile_size.width)
            areas.push_back({left, top, std::min(left + tile_size.width, size.width),
                             std::min(top + tile_size.height, size.height)});
    }
    return areas;
}

Picture::Picture(Size size, const std::function<void(Tile)> &paint, const Progress &progress) : size_(size)
{
    const std::vector<Area> areas = areas_of(size);
    for (const Area &area : areas) {
        tiles_.emplace_back(area.pixels());
        paint({area, tiles_.back().data()});
        progress("drawing", tiles_.size(), areas.size());
    }
}

void Picture::read_row(int y, std::uint8_t *pixels) const
{
    const int columns = (size_.width + tile_size.width - 1) / tile_size.width;
    auto tile = tiles_.begin() + y / tile_size.height * columns;
    for (int left = 0; left < size_.width; left += tile_size.width, ++tile) {
        const int width = std::min(tile_size.width, size_.width - left);
        std::copy_n(tile->begin() + y % tile_size.height * width, width, pixels + left);
    }
}

} // namespace atlas
