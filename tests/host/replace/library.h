/* SPDX-License-Identifier: MIT */
/* Calls the services from within a library, as a container family does. */
#ifndef MOVA_TESTS_HOST_REPLACE_LIBRARY_H
#define MOVA_TESTS_HOST_REPLACE_LIBRARY_H

#pragma GCC visibility push(default)

void library_prints(const char *text);
void library_warns(const char *text);
void library_breaks(void);
void library_raises(void);

#pragma GCC visibility pop

#endif
