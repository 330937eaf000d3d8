/* SPDX-License-Identifier: MIT */
#ifndef MOVA_TESTS_FRAME_C_LIBRARY_DPRINTF_H
#define MOVA_TESTS_FRAME_C_LIBRARY_DPRINTF_H

#ifdef __cplusplus
extern "C" {
#endif

/* Writes "C 1\n" to the file `fd` with the C library's dprintf. Returns its result. */
int write_from_c(int fd);

#ifdef __cplusplus
}
#endif

#endif
