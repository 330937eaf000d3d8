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

#include <mova/lists/simple_list.h>

#include "topology.h"

namespace atlas {

/* An outline, an item of a simple list. The last point is joined to the first. */
struct Shape {
    Shape *prev, *next; /* the simple list's */
    Points points;      /* a ring */
};

/* What a country, a polygon or a ring covers, as shapes: the places that an odd number of them enclose. So holes stay
   open. A ring that goes round a pole takes in the pole that its points are nearer to, on average. */
class Shapes {
public:
    explicit Shapes(const Country &country);
    explicit Shapes(const Polygon &polygon);
    explicit Shapes(const Ring &ring);
    ~Shapes();
    Shapes(const Shapes &) = delete;
    Shapes &operator=(const Shapes &) = delete;

    const SL_list *get() const { return list_; }

private:
    SL_list *list_ = SL_create();
};

} // namespace atlas

#endif
