/* SPDX-License-Identifier: MIT */
/* Shapes that a file is to name: each gets a small number, and is found again by it. */
#include <mova/arrays/id_lookup_table.h>
#include <stdio.h>

int main(void)
{
    char circle[] = "circle", square[] = "square", star[] = "star";
    DA_array *ids = io_lut_create();
    io_lut_add(ids, circle);
    const int32_t id = io_lut_add(ids, square);
    io_lut_set(ids, star, 5); /* as an older file has it: 3 and 4 are free */
    printf("square is %d\n", (int)id);
    printf("5 is the %s\n", (char *)io_lut_get_ptr(ids, 5));
    printf("4 is %s\n", io_lut_look_ptr(ids, 4) ? "taken" : "free");
    io_lut_release(&ids);
}
