/* SPDX-License-Identifier: MIT */
/* Bodies of functions of mova/lists/double_list.h, where their contracts are. mova/frame/inline.h says what the marks mean. */
#ifndef MOVA_LISTS_INLINE_DOUBLE_LIST_H
#define MOVA_LISTS_INLINE_DOUBLE_LIST_H

#include <mova/frame/inline.h>
#include <mova/lists/double_list.h>

#ifdef MOVA_OWN_DOUBLE_LIST
#define DBLL_INLINE
#else
#define DBLL_INLINE MOVA_INLINE
#endif

#ifdef __cplusplus
extern "C" {
#endif

DBLL_INLINE int32_t DBLL_size(const DBLL_list *list)
{
    return list->count;
}

#ifdef __cplusplus
}
#endif
#undef DBLL_INLINE

#endif
