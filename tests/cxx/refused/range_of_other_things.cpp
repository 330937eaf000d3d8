/* SPDX-License-Identifier: MIT */
// mova::to: the container cannot be made of this range: what that delivers does not convert to what this holds
#include <mova/cxx/element_list.h>
#include <string>
#include <vector>
auto lengths(const std::vector<std::string> &names)
{
    return mova::to<mova::element_list<int>>(names);
}
