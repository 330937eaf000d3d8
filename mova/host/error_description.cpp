/* SPDX-License-Identifier: MIT */
/* What a program says of a raise beyond its module, line and code. It lies in a source of its own, so that a program with
   a raise of its own can use it and not bring in the default. docs/errors.md has the same rows and says what is left. */
#include <mova/host/errors.h>

#include <cstring>

namespace {

struct check {
    const char *module;
    int32_t line;
    const char *description;
};

constexpr check checks[] = {
    {"RGBLUT", 93, "RGBLUT_init: the table is made already"},
    {"RGBLUT", 134, "RGBLUT_init: there are fewer entries than the standard colours take"},
    {"RGBLUT", 167, "CLUT_alloc: RGBLUT_init was not called"},
    {"RGBLUT", 168, "CLUT_alloc: the static phase ended with the first CLUT_new_index"},
    {"RGBLUT", 169, "CLUT_alloc: the index is not free"},
    {"RGBLUT", 186, "CLUT_new_index: RGBLUT_init was not called"},
    {"RGBLUT", 191, "CLUT_new_index: the first call finds no free index to reserve"},
    {"RGBLUT", 240, "CLUT_release_index: RGBLUT_init was not called"},
    {"RGBLUT", 241, "CLUT_release_index: the index is hard or free"},
    {"RGBLUT", 265, "CLUT_set: RGBLUT_init was not called"},
    {"RGBLUT", 266, "CLUT_set: the index is not below the size"},
    {"RGBLUT", 284, "CLUT_get: RGBLUT_init was not called"},
    {"RGBLUT", 300, "CLUT_copy: RGBLUT_init was not called"},
    {"RGBLUT", 302, "CLUT_copy: an index is not below the size"},
    {"RGBLUT", 303, "CLUT_copy: an index is free"},
    {"cache", 334, "cc_alloc: the pool has no room, even with every body out"},
    {"darray", 33, "DA_create: there is no memory for the head"},
    {"darray", 111, "DA_extend: there is no memory for the storage"},
    {"darray", 271, "DA_copy: there is no memory for the head"},
    {"darray", 289, "DA_copy_into: the element sizes differ"},
    {"egenlist", 557, "EL_replace_items_inbetween: the source has fewer elements than the range"},
    {"egenlist", 989, "EL_roll: the position has no predecessor"},
    {"gentree", 481, "GT_remove_item: the comparisons do not lead to the node"},
    {"gentree", 545, "GT_remove_item_global: the node is not in the tree"},
    {"gentree", 566, "GT_find_and_remove_item: no node holds the item"},
    {"gentree", 579, "GT_find_and_remove_item: the comparisons do not lead to the node"},
    {"gentree", 896, "GT_next_item: the iterator is not in its tree's list"},
    {"gentree", 937, "GT_next_position: the iterator is not in its tree's list"},
    {"gentree", 962, "GT_end_iterator: the iterator is not in its tree's list"},
    {"gentree", 1181, "GT_insert_item: a balance on the way to the left is not one of -1, 0, +1"},
    {"gentree", 1236, "GT_insert_item: a balance on the way to the right is not one of -1, 0, +1"},
    {"gentree", 1427, "GT_remove_first_item: the tree is empty"},
    {"gentree", 1728, "GT_remove_first_item: the first node has a left child"},
    {"gentree", 1760, "GT_remove_item: a node that its left child replaces has a right one"},
    {"gentree", 1799, "GT_remove_item: of a node with two children, a child or the predecessor's place is wrong"},
    {"memory", 10, "MM_alloc_item: the size is more than PTRDIFF_MAX"},
    {"memory", 20, "MM_alloc_item: the system has no room for a block of up to 256 KiB"},
    {"memory", 30, "MM_alloc_item: the system has no room for a block above 256 KiB"},
    {"memory", 40, "MM_realloc_item: the system has no room for a block above 256 KiB that changes its size"},
    {"memory blocks", 10, "mb_free: the handle names no live block"},
    {"plut", 108, "io_lut_get_id: the pointer has no id"},
    {"plut", 140, "io_lut_set: the id belongs to another pointer, and reuse is not allowed"},
    {"plut", 155, "io_lut_get_ptr: there is no such id, or it is free"},
    {"sgenlist", 75, "SL_release: the list holds items"},
    {"sgenlist", 743, "SL_roll: the list is closed and the item has no predecessor"},
};

} // namespace

const char *mova_error_description(const char *module, int32_t line)
{
    for (const check &check : checks)
        if (check.line == line && std::strcmp(check.module, module) == 0)
            return check.description;
    return nullptr;
}
