/* SPDX-License-Identifier: MIT */
// mova: the container has no name, and is gone before a loop over this range takes its first step: give it a name
#include <mova/cxx/dynamic_array.h>
mova::dynamic_array<int> made();
void work()
{
    for (auto at : made().positions())
        at.remove();
}
