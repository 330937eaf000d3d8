/* SPDX-License-Identifier: MIT */
#include "groups.h"

#include <stdlib.h>

#include <mova/frame/host.h>
#include <mova/host/memory.h>
#include <mova/lists/generic_list.h>

static size_t bytes_allocated;
static size_t bytes_released;

void *MM_alloc_item(size_t size)
{
    bytes_allocated += size;
    return malloc(size);
}

void MM_dealloc_item(void *item, size_t size)
{
    bytes_released += size;
    free(item);
}

void *MM_realloc_item(void *item, size_t old_size, size_t new_size)
{
    bytes_released += old_size;
    bytes_allocated += new_size;
    return realloc(item, new_size);
}

#ifdef LINKED_STATICALLY
#pragma weak mova_memory_statistics

static void check_that_the_default_is_absent(void)
{
    CHECK(mova_memory_statistics == NULL);
}
#else
static void check_that_the_default_is_absent(void)
{
}
#endif

void check_memory(void)
{
    GL_list *list = GL_create();
    GL_append_after_last(list, NULL);
    CHECK(bytes_allocated == sizeof(GL_list) + sizeof(GL_node));
    CHECK(bytes_released == 0);
    GL_release(&list);
    CHECK(bytes_released == bytes_allocated);
    check_that_the_default_is_absent();
}
