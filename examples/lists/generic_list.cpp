/* SPDX-License-Identifier: MIT */
#include <mova/cxx/pointer_list.h>
#include <cstdio>

int main()
{
    int numbers[] = {1, 2, 3, 4};
    mova::pointer_list<int> list;
    for (int &number : numbers)
        list.append(&number);
    for (const int *number : list.reversed())
        std::printf("%d\n", *number);
}
