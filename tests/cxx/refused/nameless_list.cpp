/* SPDX-License-Identifier: MIT */
// mova: the container has no name, and is gone before a loop over this range takes its first step: give it a name
#include <mova/cxx/element_list.h>
mova::element_list<int> made();
int sum()
{
    int all = 0;
    for (const int number : made().reversed())
        all += number;
    return all;
}
