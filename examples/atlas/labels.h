/* SPDX-License-Identifier: MIT */
/* The names of countries on the map: which fit, and where they stand. */
#ifndef ATLAS_LABELS_H
#define ATLAS_LABELS_H

#include <mova/tree/balanced_tree.h>

#include "canvas.h"
#include "countries.h"
#include "interior.h"
#include "topology.h"

namespace atlas {

constexpr int longest_label = 40;

/* A name in one line or more, each centred in its box. */
struct Label {
    char text[longest_label + 1]; /* glyphs, with '\n' between lines */
    Box box;
    int dot; /* the side of a dot, in cells */
    Summary summary;
};

/* The labels of a map. Each lies inside the largest polygon of its country, as large as fits there, and apart from all
   others: where two come too close, the larger country has its name. What fits nowhere is left out. */
class Labels {
public:
    /* For a map of this width and height in pixels. */
    Labels(const Topology &topology, int width, int height, const Progress &progress);
    ~Labels() { GT_total_release(&tree_, sizeof(Label)); }
    Labels(const Labels &) = delete;
    Labels &operator=(const Labels &) = delete;

    /* Of labels, those of the largest countries first. */
    tree *get() const { return tree_; }

    /* Draws the labels with the canvas's pen. */
    void draw(Canvas &canvas) const;

private:
    Grid grid_;
    tree *tree_;
};

} // namespace atlas

#endif
