#include "canvas.h"

namespace atlas {

Canvas::Canvas(Picture &picture) : picture_(picture)
{
    const Pen first = {0, 0};
    ES_push(pens_, &first);
}

Pen Canvas::pen() const
{
    Pen top;
    ES_inspect_top(pens_, &top);
    return top;
}

void Canvas::line(Pixel from, Pixel to)
{
    const Pen top = pen();
    picture_.line({from.x + top.shift, from.y}, {to.x + top.shift, to.y}, top.ink);
}

void Canvas::span(int row, int from, int end)
{
    const Pen top = pen();
    picture_.span(row, from + top.shift, end + top.shift, top.ink);
}

} // namespace atlas
