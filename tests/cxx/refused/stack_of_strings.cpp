/* SPDX-License-Identifier: MIT */
// mova::element_list copies its elements byte by byte, which this type does not allow: take mova::pointer_list
#include <mova/cxx/element_stack.h>
#include <string>
mova::element_stack<std::string> names;
