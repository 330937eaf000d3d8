/* SPDX-License-Identifier: MIT */
/* Each group of services has two files here: own_<group>.c defines the group's services, as a program does that
   replaces the default; default_<group>.c leaves them to the default host. Both define the same functions, declared
   below, so that a program is put together from one file per group. */
#ifndef MOVA_TESTS_HOST_REPLACE_GROUPS_H
#define MOVA_TESTS_HOST_REPLACE_GROUPS_H

#include <tests/c_api/check.h>

/* Check that the services in force are those that the program chose, for its own calls and for a library's. */
void check_memory(void);
void check_memory_blocks(void);
void check_messages(void);
void check_errors(void);

/* Calls `act`. Returns the code of the error that it raised, or 0. */
int code_raised_by(void (*act)(void));

#endif
