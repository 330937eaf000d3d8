/* SPDX-License-Identifier: MIT */
/* Points on the globe, in block arrays. */
#ifndef ATLAS_POINTS_H
#define ATLAS_POINTS_H

#include <cstdint>
#include <utility>

#include <mova/arrays/block_array.h>

namespace atlas {

/* An angle: a whole number of units, 2^22 of which make a degree. A unit is less than 3 cm on the ground. */
using Angle = std::int32_t;
constexpr int angle_bits = 22;
constexpr Angle degree = Angle{1} << angle_bits;

/* Longitude -180° to 180°, latitude -90° to 90°. */
struct Point {
    Angle longitude, latitude;
    bool operator==(const Point &) const = default;
};

/* The owner of a block array of points. To edit them, the GB_ functions are called directly, on `get()`. */
class Points {
public:
    /* No storage yet, for the functions that fill a new record. */
    Points() = default;
    explicit Points(std::int32_t room) { GB_init(&block_, sizeof(Point), room); }
    Points(Points &&other) noexcept : block_(std::exchange(other.block_, GB_block{})) {}
    Points &operator=(Points &&other) noexcept
    {
        std::swap(block_, other.block_);
        return *this;
    }
    ~Points() { GB_release(&block_); }

    GB_block *get() { return &block_; }
    const GB_block *get() const { return &block_; }

    std::int32_t count() const { return GB_count_items(&block_); }
    Point &operator[](std::int32_t i) { return static_cast<Point *>(block_.data)[i]; }
    const Point &operator[](std::int32_t i) const { return static_cast<const Point *>(block_.data)[i]; }
    const Point *begin() const { return static_cast<const Point *>(block_.data); }
    const Point *end() const { return begin() + count(); }
    const Point &first() const { return (*this)[0]; }
    const Point &last() const { return (*this)[count() - 1]; }

private:
    GB_block block_ = {};
};

} // namespace atlas

#endif
