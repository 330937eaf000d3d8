/* SPDX-License-Identifier: MIT */
/* What compilers warn of, and what not: each line that a warning is expected for names it. Nothing here is run. */
#include <mova/container.h>
#include <mova/host/errors.h>
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
}

void null_is_nothing_to_work_on(void **item)
{
    GT_next_item(NULL, item);     /* nonnull */
    GT_next_position(NULL, NULL); /* nonnull */
    GT_end_iterator(NULL);        /* nonnull */
    MSG_Message(NULL);            /* nonnull */
    mova_error_description("darray", 33);
    mova_error_description(NULL, 33); /* nonnull */
}

void null_has_an_answer(GT_tree *tree, DA_array *array, GL_node *node)
{
    GL_list *none = NULL;
    GL_release(&none);
    GL_all_items_inbetween(NULL, node, node, 1);
    EL_advance(NULL, NULL, 0);
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
}
