/* SPDX-License-Identifier: MIT */
/* Bodies of functions of mova/arrays/dynamic_array.h, where their contracts are. mova/frame/inline.h says what the marks mean. */
#ifndef MOVA_ARRAYS_INLINE_DYNAMIC_ARRAY_H
#define MOVA_ARRAYS_INLINE_DYNAMIC_ARRAY_H

#include <stddef.h>

#include <mova/arrays/dynamic_array.h>
#include <mova/frame/inline.h>
#include <mova/frame/inline/copy_element.h>

#ifdef MOVA_OWN_DYNAMIC_ARRAY
#define DA_INLINE
#else
#define DA_INLINE MOVA_INLINE
#endif

#ifdef __cplusplus
extern "C" {
#endif

DA_INLINE int32_t DA_nitems(const DA_array *array)
{
    return array->nitems;
}

DA_INLINE int32_t DA_nalloc(const DA_array *array)
{
    return array->nalloc;
}

DA_INLINE void *DA_data(const DA_array *array)
{
    return array->data;
}

#ifndef MOVA_OWN_DYNAMIC_ARRAY

MOVA_INLINE_PART void *mova_da_element(const DA_array *array, int32_t i)
{
    return MOVA_CAST(char *, array->data) + MOVA_CAST(size_t, i) * array->element_size;
}

extern void *mova_da_call_get_item(DA_array *array, int32_t i) MOVA_CALL(DA_get_item);
extern void mova_da_call_put_item(DA_array *array, int32_t i, const void *source) MOVA_CALL(DA_put_item);
extern void mova_da_call_append(DA_array *array, const void *source, int32_t n) MOVA_CALL(DA_append);

/* Where the array has the element. */
MOVA_SHORTCUT void *DA_get_item(DA_array *array, int32_t i)
{
    if (i >= array->nitems || !array->data)
        return mova_da_call_get_item(array, i);
    MOVA_ASSERT(i >= 0 && array->nitems <= array->nalloc);
    return mova_da_element(array, i);
}

/* Where the array has the element, and there is a source. */
MOVA_SHORTCUT void DA_put_item(DA_array *array, int32_t i, const void *source)
{
    if (i >= array->nitems || !array->data || !source) {
        mova_da_call_put_item(array, i, source);
        return;
    }
    MOVA_ASSERT(i >= 0 && array->nitems <= array->nalloc);
    mova_copy_element(mova_da_element(array, i), source, array->element_size);
}

/* One element, where there is room. */
MOVA_SHORTCUT void DA_append(DA_array *array, const void *source, int32_t n)
{
    const int32_t end = array->nitems;
    if (n != 1 || end >= array->nalloc || !array->data) {
        mova_da_call_append(array, source, n);
        return;
    }
    MOVA_ASSERT(end >= 0);
    array->nitems = end + 1;
    mova_copy_element(mova_da_element(array, end), source, array->element_size);
}

#endif

#ifdef __cplusplus
}
#endif
#undef DA_INLINE

#endif
