/* SPDX-License-Identifier: MIT */
/* Two kinds of function whose body stands in a header for the compiler to put into the caller's loop. */
#ifndef MOVA_FRAME_INLINE_H
#define MOVA_FRAME_INLINE_H

/* MOVA_INLINE marks a public function. Its one symbol is the library's: a call that is not inlined, or a pointer to the
   function, goes to that symbol, and no program carries a copy. In the one source file that owns the symbol the header
   leaves the mark out, which turns the same body into the exported function. */
#define MOVA_INLINE extern inline __attribute__((gnu_inline))

/* MOVA_INLINE_PART marks what such functions share. It has no symbol anywhere. (A static function would do, but C
   forbids an inline function with external linkage to call one.) */
#define MOVA_INLINE_PART extern inline __attribute__((gnu_inline, always_inline))

/* MOVA_POINTER converts a `void *` without a cast that a compiler for C++ may be asked to warn of. */
#ifdef __cplusplus
#define MOVA_POINTER(type, pointer) static_cast<type *>(pointer)
#else
#define MOVA_POINTER(type, pointer) ((type *)(pointer))
#endif

#endif
