/* SPDX-License-Identifier: MIT */
#define _POSIX_C_SOURCE 200809L
#include <mova/container.h>
#include <mova/frame/host.h>

#include <stdio.h>

#include "c_library_dprintf.h"

int write_from_c(int fd)
{
    return dprintf(fd, "%c %d\n", 'C', 1);
}
