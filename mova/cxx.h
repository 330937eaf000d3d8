/* SPDX-License-Identifier: MIT */
/* The typed layer: every family as a class. docs/cxx.md has a recipe for each. */
#ifndef MOVA_CXX_H
#define MOVA_CXX_H

#include <mova/cxx/balanced_tree.h>
#include <mova/cxx/block_array.h>
#include <mova/cxx/block_pool.h>
#include <mova/cxx/colour_table.h>
#include <mova/cxx/double_list.h>
#include <mova/cxx/dynamic_array.h>
#include <mova/cxx/element_list.h>
#include <mova/cxx/element_stack.h>
#include <mova/cxx/hash_table.h>
#include <mova/cxx/id_table.h>
#include <mova/cxx/intrusive_list.h>
#include <mova/cxx/keyed_table.h>
#include <mova/cxx/pointer_list.h>
#include <mova/cxx/pointer_lookup.h>
#include <mova/cxx/sorted_numbers.h>
#include <mova/cxx/swap_cache.h>

#endif
