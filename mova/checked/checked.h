/* SPDX-License-Identifier: MIT */
/* What the checked library tells a program that asks: each misuse, as a record.

   The checked library has the names, the records and the results of the ordinary one, and takes its place when a program is
   started with mova-check, or linked with mova::container_checked. The functions here are in the checked library alone: a
   program that also runs with the ordinary one looks for them with dlsym.

   What a misuse does is told by the environment variable MOVA_CHECK, a list of words with commas between them:

       abort    prints the misuse and aborts; this is the way where none of the three is named
       log      prints the misuse and goes on as the ordinary library would
       raise    prints the misuse and raises MOVA_PRECONDITION_BROKEN, line 0, under the name "checked"
       full     looks at a container's invariants before every call, not just now and then
       order    asks the neighbours too where a tree or a sorted array is descended
       leaks    lists at the end of the program what lives, by the place where it was made

   MOVA_CHECK_LOG=FILE appends to the file what else goes to stderr. A misuse is printed once for each place.

   Ownership: the records and their texts are the library's, the context is the caller's. Nothing here raises by itself, or can
   fail. Threads: the receiver is the whole program's. It may be set at any time and from any thread, and is called on the
   thread that misuses. */
#ifndef MOVA_CHECKED_CHECKED_H
#define MOVA_CHECKED_CHECKED_H

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* A misuse. The texts are the library's. */
typedef struct mova_misuse {
    const char *function; /* the function that was called: "GL_remove_item" */
    const char *what;     /* "the position is of another list" */
    const void *place;    /* the address that the call would have returned to */
    const char *report;   /* what is printed: the line with function and what, and the indented lines below it */
} mova_misuse;

/* Receives a misuse, every time that it happens, before MOVA_CHECK's way is gone. The record is good until it returns. It may
   leave by an exception or a jump: then the call is not made. */
typedef void (*mova_misuse_fn)(const mova_misuse *misuse, void *context);

/* Sets the function that receives every misuse, or none where it is null. While there is one, nothing is printed, and abort
   means log: what follows is up to it. */
void mova_checked_set_receiver(mova_misuse_fn receiver, void *context);

/* Returns the number of misuses that were found since the program started, those of a place that was known included. */
long mova_checked_misuses(void);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
