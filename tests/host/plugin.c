/* SPDX-License-Identifier: MIT */
#include <mova/frame/host.h>

void use_memory(void)
{
    MM_dealloc_item(MM_alloc_item(24), 24);
    MM_dealloc_item(MM_alloc_item(300000), 300000);
}
