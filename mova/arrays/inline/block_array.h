/* SPDX-License-Identifier: MIT */
/* Bodies of functions of mova/arrays/block_array.h, where their contracts are. mova/frame/inline.h says what the marks mean. */
#ifndef MOVA_ARRAYS_INLINE_BLOCK_ARRAY_H
#define MOVA_ARRAYS_INLINE_BLOCK_ARRAY_H

#include <stddef.h>

#include <mova/arrays/block_array.h>
#include <mova/frame/inline.h>
#include <mova/frame/inline/copy_element.h>

#ifdef MOVA_OWN_BLOCK_ARRAY
#define GB_INLINE
#else
#define GB_INLINE MOVA_INLINE
#endif

#ifdef __cplusplus
extern "C" {
#endif

GB_INLINE int32_t GB_count_items(const GB_block *block)
{
    return block->count;
}

#ifndef MOVA_OWN_BLOCK_ARRAY

extern int32_t mova_gb_call_append_after_last(GB_block *block, const void *element) MOVA_CALL(GB_append_after_last);

/* Where there is room. */
MOVA_SHORTCUT int32_t GB_append_after_last(GB_block *block, const void *element)
{
    const int32_t index = block->count;
    char *data = MOVA_CAST(char *, block->data);
    if (index >= block->capacity)
        return mova_gb_call_append_after_last(block, element);
    MOVA_ASSERT(index >= 0);
    block->count = index + 1;
    mova_copy_element(data + MOVA_CAST(size_t, index) * block->element_size, element, block->element_size);
    return index;
}

#endif

#ifdef __cplusplus
}
#endif
#undef GB_INLINE

#endif
