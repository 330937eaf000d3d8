/* SPDX-License-Identifier: MIT */
/* What compilers warn of, and what not: each line that a warning is expected for names it. Nothing here is run. */
#include <mova/container.h>
#include <mova/host/errors.h>
#include <mova/host/memory.h>
#include <mova/host/memory_blocks.h>

static int32_t compare(void *a, void *b)
{
    return (a > b) - (a < b);
}

void what_a_call_makes_is_dropped(GT_tree *tree)
{
    GL_create();                              /* unused-result */
    EL_create(4);                             /* unused-result */
    ES_create(4);                             /* unused-result */
    SL_create();                              /* unused-result */
    DBLL_create();                            /* unused-result */
    DA_create(4, 1);                          /* unused-result */
    io_lut_create();                          /* unused-result */
    GT_create_with_dupl_not_allowed(compare); /* unused-result */
    GT_all_items(tree);                       /* unused-result */
    HSH_create(8, 0);                         /* unused-result */
    mova_lu_create();                         /* unused-result */
    cc_create(NULL);                          /* unused-result */
    mb_create_pool(16);                       /* unused-result */
    MM_alloc_item(4);                         /* unused-result */
    mova_memory_zeroed(4);                    /* unused-result */
    mova_memory_aligned(64, 4);               /* unused-result */
}

void null_is_no_container(void *item)
{
    GL_count_items(NULL);             /* nonnull */
    EL_reverse(NULL);                 /* nonnull */
    ES_is_empty(NULL);                /* nonnull */
    SL_reverse(NULL);                 /* nonnull */
    DBLL_sort(NULL);                  /* nonnull */
    GB_release(NULL);                 /* nonnull */
    DA_nitems(NULL);                  /* nonnull */
    SA_add_number(NULL, 1);           /* nonnull */
    io_lut_add(NULL, item);           /* nonnull */
    GT_insert_item(NULL, item);       /* nonnull */
    HSH_get_value(NULL, 1);           /* nonnull */
    mova_lu_get(NULL, 1);             /* nonnull */
    cc_flush(NULL);                   /* nonnull */
    mb_pool_statistics(NULL);         /* nonnull */
    mb_release_pool(NULL);            /* nonnull */
    CLUT_get(0, NULL, NULL, NULL);    /* nonnull */
    GL_release(NULL);                 /* nonnull */
    MSG_Message(NULL);                /* nonnull */
    mova_error_description(NULL, 33); /* nonnull */
}

void null_is_no_position(GL_list *list, EL_list *elements, SL_list *items, cc_cache *cache, void **item)
{
    GL_remove_item(list, NULL);        /* nonnull */
    GL_next_item(NULL, item);          /* nonnull */
    EL_remove_item(elements, NULL);    /* nonnull */
    SL_append_after_last(items, NULL); /* nonnull */
    cc_get(cache, NULL);               /* nonnull */
    GT_next_item(NULL, item);          /* nonnull */
}

void null_has_an_answer(GT_tree *tree, EL_list *elements, SL_list *items, DA_array *array, GL_node *node)
{
    GL_list *none = NULL;
    GL_release(&none);
    GL_all_items_inbetween(NULL, node, node, 1);
    EL_advance(NULL, NULL, 0);
    EL_insert_before(elements, NULL, "A");
    SL_insert_after(items, NULL, node);
    GT_make_empty(NULL);
    GT_total_make_empty(NULL, 4);
    GT_remove_item(tree, NULL);
    GT_remove_item_global(tree, NULL);
    DA_release(NULL);
    DA_memsize(NULL);
    DA_put_item(array, 0, NULL);
    mova_lu_release(NULL, NULL);
    MM_dealloc_item(NULL, 4);
    mova_set_error_handler(NULL);
    mova_error_description("darray", 33);
}
