/* SPDX-License-Identifier: MIT */
/* The library's version. The build, the shared libraries' names and what is installed follow it. Not so the names of the
   packages with the shared libraries: with the first number they change in debian/ (CONTRIBUTING.md says where). */
#ifndef MOVA_VERSION_H
#define MOVA_VERSION_H

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

#define MOVA_VERSION_MAJOR 1 /* changes where programs have to be built anew; part of the shared libraries' names */
#define MOVA_VERSION_MINOR 0 /* changes where something is added */
#define MOVA_VERSION_PATCH 0 /* changes with every other release */

/* One number that grows with the version: 10203 for 1.2.3. */
#define MOVA_VERSION (MOVA_VERSION_MAJOR * 10000 + MOVA_VERSION_MINOR * 100 + MOVA_VERSION_PATCH)

/* Returns MOVA_VERSION of the library that the program runs with, which may be newer than the headers that it was compiled
   with. */
int mova_version(void);

/* Returns the same as a constant text: "1.2.3". */
const char *mova_version_text(void);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
