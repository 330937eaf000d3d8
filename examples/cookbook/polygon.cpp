/* SPDX-License-Identifier: MIT */
/* A polygon is cut along a line between two of its corners. */
#include <mova/cxx/element_list.h>
#include <cstdio>
#include <utility>

struct point {
    double x, y;
};
using polygon = mova::element_ring<point>;

static double area(const polygon &outline)
{
    double doubled = 0;
    for (auto at = outline.begin(); at != outline.end(); ++at) {
        const point &next = *std::next(polygon::const_position(at));
        doubled += at->x * next.y - next.x * at->y;
    }
    return doubled / 2;
}

/* Both parts have both corners. */
static std::pair<polygon, polygon> cut(polygon whole, polygon::position from, polygon::position to)
{
    mova::element_list<point> one = std::move(whole).open_at(from); /* from … to … from */
    mova::element_list<point> other = one.split(mova::element_list<point>::position(to.get()));
    return {std::move(one).close(), std::move(other).close()};
}

static void print(const polygon &outline)
{
    for (const point &corner : outline)
        std::printf("%g,%g ", corner.x, corner.y);
    std::printf("has an area of %g\n", area(outline));
}

int main()
{
    polygon land = {{0, 0}, {4, 0}, {4, 3}, {2, 5}, {0, 3}};
    print(land);
    const polygon::position from = land.position_at(2), to = land.position_at(4);
    const auto [roof, house] = cut(std::move(land), from, to);
    print(roof);
    print(house);
}
