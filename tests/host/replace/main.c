/* SPDX-License-Identifier: MIT */
#include "groups.h"

int main(void)
{
    check_memory();
    check_memory_blocks();
    check_messages();
    check_errors();
    return 0;
}
