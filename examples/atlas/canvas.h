/* A picture and the pen that draws in it. */
#ifndef ATLAS_CANVAS_H
#define ATLAS_CANVAS_H

#include <mova/lists/element_stack.h>

#include "picture.h"

namespace atlas {

struct Pen {
    std::uint8_t ink;
    int shift; /* how many columns further to the right it draws */
};

/* The pens lie on a stack, and the top one draws: whoever takes another one puts it back when done (see PenInHand). */
class Canvas {
public:
    /* Starts with ink 0, without a shift. */
    explicit Canvas(Picture &picture);
    ~Canvas() { ES_release(&pens_); }
    Canvas(const Canvas &) = delete;
    Canvas &operator=(const Canvas &) = delete;

    int width() const { return picture_.width(); }
    int height() const { return picture_.height(); }
    Pen pen() const;

    void line(Pixel from, Pixel to);
    /* Draws the columns from `from` up to, not including, `end`. */
    void span(int row, int from, int end);

private:
    friend class PenInHand;

    Picture &picture_;
    ES_stack *pens_ = ES_create(sizeof(Pen));
};

/* Has the canvas draw with another pen while it lives. */
class PenInHand {
public:
    PenInHand(Canvas &canvas, Pen pen) : canvas_(canvas) { ES_push(canvas_.pens_, &pen); }
    PenInHand(Canvas &canvas, std::uint8_t ink) : PenInHand(canvas, Pen{ink, canvas.pen().shift}) {}
    ~PenInHand()
    {
        Pen used;
        ES_pop(canvas_.pens_, &used);
    }
    PenInHand(const PenInHand &) = delete;
    PenInHand &operator=(const PenInHand &) = delete;

private:
    Canvas &canvas_;
};

} // namespace atlas

#endif
