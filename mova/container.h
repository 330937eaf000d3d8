/* SPDX-License-Identifier: MIT */
/* Every container family. */
#ifndef MOVA_CONTAINER_H
#define MOVA_CONTAINER_H

#include <mova/arrays/block_array.h>
#include <mova/arrays/dynamic_array.h>
#include <mova/arrays/id_lookup_table.h>
#include <mova/arrays/sorted_number_array.h>
#include <mova/cache/swap_cache.h>
#include <mova/clut/colour_table.h>
#include <mova/hash/hash_table.h>
#include <mova/hash/pointer_lookup.h>
#include <mova/lists/double_list.h>
#include <mova/lists/element_list.h>
#include <mova/lists/element_stack.h>
#include <mova/lists/generic_list.h>
#include <mova/lists/simple_list.h>
#include <mova/tree/balanced_tree.h>

#endif
