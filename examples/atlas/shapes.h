/* SPDX-License-Identifier: MIT */
/* Rings as closed outlines on the flat map: what there is to fill.

   A ring of the topology is joined from arcs, some of them run backwards. On the globe it is closed; on the map it may
   leave at one side, at 180°, and come in again at the other. There it is cut:

         +-----------------------+           +-----------------------+
         |                       |           |                       |
       -----+               +-------         |--+               +----|
         |  |               |    |     ->    |  |               |    |     each piece is closed along its side
       -----+               +-------         |--+               +----|
         +-----------------------+           +-----------------------+

         +-----------------------+           +-----------------------+
         |                       |           |                       |
       ------+     +---------------    ->    |---+     +-------------|     one that goes all the way round a pole
         |   +-----+             |           |   +-----+             |     is closed along the edge at that pole
         |                       |           |                       |
         +-----------------------+           +-----------------------+ */
#ifndef ATLAS_SHAPES_H
#define ATLAS_SHAPES_H

#include "topology.h"

namespace atlas {

/* Outlines, each a ring: its last point is joined to its first. */
using Shapes = Owned<Points>;

/* Returns what a country or a polygon covers, as shapes: the places that an odd number of them enclose. So holes stay open. A
   ring that goes round a pole takes in the pole that its points are nearer to, on average. */
Shapes shapes_of(const Country &country);
Shapes shapes_of(const Polygon &polygon);

/* Calls `visit` with both ends of each side. */
template <class Visit>
void for_each_side(const Points &shape, Visit visit)
{
    auto to = shape.around().begin();
    for (const Point &from : shape)
        visit(from, *++to);
}
template <class Visit>
void for_each_side(const Shapes &shapes, Visit visit)
{
    for (const Points *shape : shapes)
        for_each_side(*shape, visit);
}

/* Returns the sine of a latitude, times 2^sine_bits. */
constexpr int sine_bits = 30;
std::int64_t sine(Angle latitude);

/* Returns how many square kilometres a polygon covers: its largest ring without the others, which are holes. The globe is
   taken for a sphere, and a side for a straight line in the equirectangular view. */
std::int64_t area(const Polygon &polygon);

} // namespace atlas

#endif
