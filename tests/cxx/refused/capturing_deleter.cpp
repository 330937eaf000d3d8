/* SPDX-License-Identifier: MIT */
// mova: a deleter must have no state: take a class whose operator() says how an item dies
#include <mova/cxx/pointer_list.h>
void count_deaths(int *count)
{
    const auto counted = [count](int *number) {
        ++*count;
        delete number;
    };
    mova::pointer_list<int, std::remove_const_t<decltype(counted)>> numbers;
    for (const int *number : numbers)
        *count += *number;
}
