/* SPDX-License-Identifier: MIT */
// mova::balanced_set: a printer must have no state, for GT_print_tree takes a plain function
#include <mova/cxx/balanced_tree.h>
void print(const mova::balanced_set<int> &numbers, int &printed)
{
    numbers.print([&printed](int) { ++printed; });
}
