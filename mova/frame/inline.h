/* SPDX-License-Identifier: MIT */
/* Bodies in the headers, for the compiler to put into the caller's code.

   A header declares its functions, with their contracts, as if all of them were calls. At its end it includes
   mova/<room>/inline/<name>.h, where the bodies stand of those whose call costs as much as their work. There are three kinds:

       MOVA_INLINE       The whole function. It stands here once: the one source file that owns the symbol leaves the mark
                         out, which turns the same body into the exported function.
       MOVA_SHORTCUT     The usual case of a function, with the same results. For all other cases it calls the exported
                         function, by the name that MOVA_CALL gives that. The source file that owns the symbol does not see
                         the shortcut.
       MOVA_INLINE_PART  What such functions share. It has no symbol anywhere. (A static function would do, but C forbids
                         an inline function with external linkage to call one.)

   The symbols are the library's: a call that is not inlined, or a pointer to the function, goes there, and no program carries
   a copy. A compiler that does not optimise inlines none.

   A program that is compiled with -DMOVA_NO_INLINE sees no body, and calls the library for every function: to set
   breakpoints, to count calls, to put other functions in their place. Results, records, host calls and callbacks are the
   same. */
#ifndef MOVA_FRAME_INLINE_H
#define MOVA_FRAME_INLINE_H

#define MOVA_INLINE extern inline __attribute__((gnu_inline))
#define MOVA_SHORTCUT extern inline __attribute__((gnu_inline))
#define MOVA_INLINE_PART extern inline __attribute__((gnu_inline, always_inline))

/* MOVA_CALL(HSH_get_value) at the end of a declaration says that what it declares is that exported function. */
#define MOVA_CALL(function) __asm__(#function)

/* MOVA_CAST converts without a cast that a compiler for C++ may be asked to warn of. */
#ifdef __cplusplus
#define MOVA_CAST(type, value) static_cast<type>(value)
#else
#define MOVA_CAST(type, value) ((type)(value))
#endif

/* The bodies assert what the library's own sources do, in the builds of the library and its tests, which ask for it. */
#ifdef MOVA_ASSERT_INLINE
#include <assert.h>
#define MOVA_ASSERT(holds) assert(holds)
#else
#define MOVA_ASSERT(holds) ((void)0)
#endif

/* The case that a shortcut is for. */
#define MOVA_USUALLY(holds) __builtin_expect(!!(holds), 1)

#endif
