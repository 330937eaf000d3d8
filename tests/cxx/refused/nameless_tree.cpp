/* SPDX-License-Identifier: MIT */
// mova: the container has no name, and is gone before a loop over this range takes its first step: give it a name
#include <mova/cxx/balanced_tree.h>
mova::balanced_multiset<const int> made();
int count_of(int key)
{
    int count = 0;
    for ([[maybe_unused]] const int &number : made().equal_range(key))
        ++count;
    return count;
}
