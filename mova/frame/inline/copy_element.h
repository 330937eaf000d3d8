/* SPDX-License-Identifier: MIT */
/* How the containers copy one element. */
#ifndef MOVA_FRAME_INLINE_COPY_ELEMENT_H
#define MOVA_FRAME_INLINE_COPY_ELEMENT_H

#include <stddef.h>

#include <mova/frame/inline.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A call of memcpy takes longer than the copy of a small element. Pointers to elements of size 0 may be null. */
MOVA_INLINE_PART void mova_copy_element(void *to, const void *from, size_t size)
{
    /* Hides what the pointers point to: where the compiler sees an object of 4 bytes, it would warn of the copies of 8 and 16,
       which are never made there. */
    __asm__("" : "+r"(to), "+r"(from));
    if (size == 8)
        __builtin_memcpy(to, from, 8);
    else if (size == 4)
        __builtin_memcpy(to, from, 4);
    else if (size == 16)
        __builtin_memcpy(to, from, 16);
    else if (size != 0)
        __builtin_memcpy(to, from, size);
}

#ifdef __cplusplus
}
#endif

#endif
