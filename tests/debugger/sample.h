/* SPDX-License-Identifier: MIT */
/* A program that a debugger looks at: a container of each family, edited as programs edit them. */
#ifndef MOVA_TESTS_DEBUGGER_SAMPLE_H
#define MOVA_TESTS_DEBUGGER_SAMPLE_H

#ifdef __cplusplus
extern "C" {
#endif

/* The containers of the typed layer, and damaged ones. */
void make_typed(void);
void make_damaged(void);

#ifdef __cplusplus
}
#endif

#endif
