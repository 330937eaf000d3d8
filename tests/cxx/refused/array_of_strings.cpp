/* SPDX-License-Identifier: MIT */
// mova::dynamic_array and mova::block_array move their elements as bytes, which this type does not allow: take mova::keyed_table
#include <mova/cxx/dynamic_array.h>
#include <string>
mova::dynamic_array<std::string> names;
