/* SPDX-License-Identifier: MIT */
// mova::balanced_set: a comparison must have no state, for the tree keeps it as a plain function: take a class whose
#include <mova/cxx/balanced_tree.h>
bool edit(int from, int &added)
{
    const auto nearer = [from](const int &a, const int &b) { return a - from < b - from; };
    mova::balanced_set<int, std::remove_const_t<decltype(nearer)>> numbers;
    numbers.insert(added);
    for (const auto at : numbers.positions())
        numbers.remove(at);
    numbers.sort();
    return numbers.contains(1) || numbers.lower_bound(2) != numbers.end();
}
