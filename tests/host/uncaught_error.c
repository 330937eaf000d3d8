/* SPDX-License-Identifier: MIT */
/* A program in C that raises an error and has no handler for it. */
#include <sys/resource.h>

#include <mova/frame/host.h>

int main(void)
{
    const struct rlimit no_core_file = {0, 0};
    setrlimit(RLIMIT_CORE, &no_core_file);
    EX_raise_exception_line("gentree", 481, MOVA_PRECONDITION_BROKEN);
    return 0;
}
