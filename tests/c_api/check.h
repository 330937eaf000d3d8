/* SPDX-License-Identifier: MIT */
/* Checks for test programs in C. The first that does not hold ends the program, and says where. */
#ifndef MOVA_TESTS_C_API_CHECK_H
#define MOVA_TESTS_C_API_CHECK_H

#include <stdio.h>
#include <stdlib.h>

#define CHECK(condition) check_that((condition), #condition, __FILE__, __LINE__)

static inline void check_that(int holds, const char *condition, const char *file, int line)
{
    if (!holds) {
        fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, condition);
        exit(EXIT_FAILURE);
    }
}

#endif
