/* SPDX-License-Identifier: MIT */
/* The default message service: where debug output and warnings go.

       service          by default                          a program may set
       mova_dprintf     formatted to stderr, as printf      mova_set_debug_print: gets the formatted text
       MSG_Message      the text and a newline to stderr    mova_set_message: gets the text
       debug_break      stops in an attached debugger, and returns where there is none

   The functions that receive texts are the whole program's. They may be set at any time and from any thread; a text
   that another thread has begun may still go to the function before it. They may throw; a longjmp out of the one for
   the debug output loses the memory of a text longer than 511 characters.

   Ownership: a text is the caller's, and is gone when the function that received it returns. Errors: nothing is raised.

   debug_break asks Linux whether the calling thread is traced, and takes any tracer for a debugger. That takes a file
   to be read. So each thread asks eight times a second at most, and a debugger is noticed an eighth of a second after it
   was attached at the latest; the calls between cost a look at the clock. On other systems it returns.

   A program that defines mova_dprintf, debug_break and MSG_Message itself replaces this group. It then uses nothing
   that is declared here: in a static link that would bring in the defaults a second time. */
#ifndef MOVA_HOST_MESSAGES_H
#define MOVA_HOST_MESSAGES_H

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Receives a text. It is the caller's and is gone when the function returns. */
typedef void (*mova_text_fn)(const char *text);

/* Sets the function that receives the debug output: the text of one mova_dprintf, of any length, with the newlines
   that its format holds and none added. Only where there is no memory for it, a text is cut to 511 characters. Null
   restores stderr. Returns the function before, null for stderr. */
mova_text_fn mova_set_debug_print(mova_text_fn print);

/* Sets the function that receives the warnings. Null restores stderr. Returns the function before, null for
   stderr. */
mova_text_fn mova_set_message(mova_text_fn show);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
