/* SPDX-License-Identifier: MIT */
/* Bodies of functions of mova/hash/pointer_lookup.h, where their contracts are. mova/frame/inline.h says what the marks
   mean. */
#ifndef MOVA_HASH_INLINE_POINTER_LOOKUP_H
#define MOVA_HASH_INLINE_POINTER_LOOKUP_H

#include <mova/frame/inline.h>
#include <mova/hash/pointer_lookup.h>

#ifdef MOVA_OWN_POINTER_LOOKUP
#define LU_INLINE
#else
#define LU_INLINE MOVA_INLINE
#endif

#ifdef __cplusplus
extern "C" {
#endif

LU_INLINE mova_word mova_lu_get(const mova_lookup *lookup, mova_word key)
{
    return key == lookup->front_key ? lookup->front_value : HSH_get_value(lookup->table, key);
}

#ifdef __cplusplus
}
#endif
#undef LU_INLINE

#endif
