/* SPDX-License-Identifier: MIT */
// mova: a deleter must have no state: take a class whose operator() says how an item dies
#include <mova/cxx/pointer_list.h>
struct counted {
    int *count;
    void operator()(int *) const { ++*count; }
};
mova::pointer_list<int, counted> numbers;
