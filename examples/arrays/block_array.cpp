/* SPDX-License-Identifier: MIT */
/* A polygon as a ring of points: rolled, then cut open into an outline that ends where it starts. */
#include <mova/arrays/block_array.h>
#include <cstdio>

struct point {
    int x, y;
};

int main()
{
    const point corners[] = {{0, 0}, {4, 0}, {4, 3}, {0, 3}};
    GB_block ring;
    GB_init(&ring, sizeof(point), 4);
    for (const point &corner : corners)
        GB_append_after_last(&ring, &corner);
    GB_set_closed(&ring);
    GB_roll(&ring, 1);
    GB_make_open_at_position(&ring, 0);
    const auto *outline = static_cast<const point *>(ring.data);
    for (int i = 0; i < GB_count_items(&ring); ++i)
        std::printf("%d,%d\n", outline[i].x, outline[i].y);
    GB_release(&ring);
}
