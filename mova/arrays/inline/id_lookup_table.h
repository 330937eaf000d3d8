/* SPDX-License-Identifier: MIT */
/* Bodies of functions of mova/arrays/id_lookup_table.h, where their contracts are. mova/frame/inline.h says what the marks
   mean. */
#ifndef MOVA_ARRAYS_INLINE_ID_LOOKUP_TABLE_H
#define MOVA_ARRAYS_INLINE_ID_LOOKUP_TABLE_H

#include <stddef.h>

#include <mova/arrays/id_lookup_table.h>
#include <mova/arrays/inline/dynamic_array.h>
#include <mova/frame/inline.h>

#ifdef MOVA_OWN_ID_LOOKUP_TABLE
#define LUT_INLINE
#else
#define LUT_INLINE MOVA_INLINE
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* One comparison: an id below 1 is above all others here, and there is the word of the flags to take away. */
LUT_INLINE void *io_lut_look_ptr(const DA_array *table, int32_t id)
{
    const uint32_t ids = MOVA_CAST(uint32_t, DA_nitems(table)) - 1;
    MOVA_ASSERT(table->element_size == sizeof(void *) && DA_nitems(table) > 0);
    return MOVA_CAST(uint32_t, id) - 1 < ids ? MOVA_CAST(void **, DA_data(table))[id] : NULL;
}

#ifndef MOVA_OWN_ID_LOOKUP_TABLE

extern void *mova_lut_call_get_ptr(const DA_array *table, int32_t id) MOVA_CALL(io_lut_get_ptr);

/* Where the id is a pointer's. */
MOVA_SHORTCUT void *io_lut_get_ptr(const DA_array *table, int32_t id)
{
    void *pointer = io_lut_look_ptr(table, id);
    return pointer ? pointer : mova_lut_call_get_ptr(table, id);
}

#endif

#ifdef __cplusplus
}
#endif
#undef LUT_INLINE

#endif
