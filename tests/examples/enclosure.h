/* SPDX-License-Identifier: MIT */
/* Whether a country covers a point, found without the shapes, the cuts and the scanlines of the fill: on the globe, by
   the sides that a meridian crosses between the point and a pole. In whole numbers, and slow. */
#ifndef TESTS_EXAMPLES_ENCLOSURE_H
#define TESTS_EXAMPLES_ENCLOSURE_H

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "topology.h"

namespace enclosure {

constexpr std::int64_t globe = std::int64_t{360} * atlas::degree;

enum Answer { outside, inside, doubtful };

/* Units to the right of -180° and below 90°. */
struct Place {
    std::int64_t x, y;
};

/* A side of a ring, from its left end to its right one; it may lead across the edge of the map. */
struct Side {
    Place left, right;
    bool pole_is_below; /* which pole the ring would take in */

    /* Positive where the side passes below the place: how far, times the side's width. */
    std::int64_t below(Place place) const
    {
        return (place.x - left.x) * (right.y - left.y) - (place.y - left.y) * (right.x - left.x);
    }

    /* A place on the side counts as a little to the right, and less than that below. */
    bool counts_for(Place place) const
    {
        if (place.x < left.x || place.x >= right.x)
            return false;
        const std::int64_t distance = below(place);
        const bool above = distance < 0 || (distance == 0 && right.y <= left.y);
        return above == pole_is_below;
    }

    bool is_near(Place place, std::int64_t slack) const
    {
        if (place.x < left.x - slack || place.x > right.x + slack || place.y < std::min(left.y, right.y) - slack ||
            place.y > std::max(left.y, right.y) + slack)
            return false;
        return std::abs(below(place)) <= slack * (right.x - left.x + std::abs(right.y - left.y));
    }
};

class Area {
public:
    explicit Area(const atlas::Country &country)
    {
        atlas::for_each_ring(country, [this](const atlas::Ring &ring) { add(points_of(ring)); });
    }

    /* What lies within `slack` of a side is doubtful; nothing is, where that is negative. */
    Answer covers(Place place, std::int64_t slack) const
    {
        bool odd = false;
        for (const std::int64_t turn : {-globe, std::int64_t{0}, globe}) {
            const Place turned = {place.x + turn, place.y};
            if (turned.x < first_ - std::abs(slack) || turned.x > last_ + std::abs(slack))
                continue;
            for (const Side &side : sides_) {
                if (side.is_near(turned, slack))
                    return doubtful;
                odd ^= side.counts_for(turned);
            }
        }
        return odd ? inside : outside;
    }

private:
    /* Each stretch's last point is the next one's first. */
    static std::vector<atlas::Point> points_of(const atlas::Ring &ring)
    {
        std::vector<atlas::Point> points;
        for (const atlas::Stretch &stretch : ring) {
            std::vector<atlas::Point> along(stretch.arc->points.begin(), stretch.arc->points.end());
            if (stretch.reversed)
                std::reverse(along.begin(), along.end());
            points.insert(points.end(), along.begin(), along.end() - 1);
        }
        return points;
    }

    void add(const std::vector<atlas::Point> &points)
    {
        std::int64_t sum = 0;
        for (const atlas::Point &point : points)
            sum += point.latitude;
        for (std::size_t i = 0; i < points.size(); ++i)
            add(points[i], points[(i + 1) % points.size()], sum < 0);
    }

    void add(atlas::Point from, atlas::Point to, bool below)
    {
        std::int64_t across = std::int64_t{to.longitude} - from.longitude;
        if (std::abs(across) > globe / 2)
            across += across < 0 ? globe : -globe;
        const std::int64_t x = from.longitude + globe / 2;
        Place left = {x, globe / 4 - from.latitude}, right = {x + across, globe / 4 - to.latitude};
        if (left.x > right.x)
            std::swap(left, right);
        sides_.push_back({left, right, below});
        first_ = std::min(first_, left.x);
        last_ = std::max(last_, right.x);
    }

    std::vector<Side> sides_;
    std::int64_t first_ = 2 * globe, last_ = -globe;
};

} // namespace enclosure

#endif
