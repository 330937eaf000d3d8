/* SPDX-License-Identifier: MIT */
// mova::pointer_list: a deleter must have no state: take a class whose operator()
#include <mova/cxx/pointer_list.h>
struct counted {
    int *count;
    void operator()(int *) const { ++*count; }
};
mova::pointer_list<int, counted> numbers;
