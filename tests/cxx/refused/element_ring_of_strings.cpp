/* SPDX-License-Identifier: MIT */
// mova::element_list copies its elements byte by byte, which this type does not allow: take mova::pointer_list
#include <mova/cxx/element_list.h>
#include <string>
void add(mova::element_list<std::string> &names)
{
    names.append("Oslo");
    for (std::string &each : names)
        each += "!";
    auto ring = std::move(names).close();
    ring.append("Rome");
}
