/* SPDX-License-Identifier: MIT */
// mova::balanced_set: a comparison must have no state, for the tree keeps it as a plain function: take a class whose
#include <mova/cxx/balanced_tree.h>
struct by_distance {
    int from;
    bool operator()(int a, int b) const { return a - from < b - from; }
};
mova::balanced_set<int, by_distance> numbers;
