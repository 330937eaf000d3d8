/* SPDX-License-Identifier: MIT */
// mova: the container has no name, and is gone before a loop over this range takes its first step: give it a name
#include <mova/cxx/element_list.h>
mova::element_ring<int> made();
int first_of_all()
{
    for (const int number : made().around())
        return number;
}
