/* SPDX-License-Identifier: MIT */
/* Eight threads on the checked library, each with containers of its own, of all families but two, which one of them has alone.
   Now and then each makes a mistake, so that they report at once. For the thread sanitizer. */
#include <mova/arrays/block_array.h>
#include <mova/arrays/id_lookup_table.h>
#include <mova/arrays/sorted_number_array.h>
#include <mova/cache/swap_cache.h>
#include <mova/checked/checked.h>
#include <mova/clut/colour_table.h>
#include <mova/frame/host.h>
#include <mova/hash/hash_table.h>
#include <mova/hash/pointer_lookup.h>
#include <mova/host/memory_blocks.h>
#include <mova/lists/double_list.h>
#include <mova/lists/element_stack.h>
#include <mova/lists/generic_list.h>
#include <mova/lists/simple_list.h>
#include <mova/tree/balanced_tree.h>

#include <atomic>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <thread>
#include <vector>

namespace {

constexpr int threads = 8, rounds = 150, rounds_a_mistake = 50, most_items = 40;

std::atomic<int> mistakes, other_misuses;
thread_local jmp_buf *leave_by;

/* A call that is a mistake is not made. */
void receive(const mova_misuse *misuse, void *)
{
    if (!std::strcmp(misuse->function, "GL_count_items") && !std::strcmp(misuse->what, "the list was released")) {
        ++mistakes;
        std::longjmp(*leave_by, 1);
    }
    std::fputs(misuse->report, stderr);
    ++other_misuses;
}

void use_lists()
{
    double numbers[most_items];
    GL_list *list = GL_create();
    EL_list *elements = EL_create(sizeof(double));
    ES_stack *stack = ES_create(sizeof(double));
    DBLL_list *doubles = DBLL_create();
    for (double &number : numbers) {
        number = static_cast<double>(&number - numbers);
        GL_append_after_last(list, &number);
        EL_append_after_last(elements, &number);
        ES_push(stack, &number);
        DBLL_add_double(doubles, number);
    }
    GL_iterator walk = GL_all_items(list);
    for (GL_node *at; GL_next_position(&walk, &at);)
        GL_remove_item(list, at);
    EL_list *part = EL_remove_and_get_end_part(elements, EL_get_pos_at_index(elements, most_items / 2));
    EL_append_list(elements, &part);
    ES_pop(stack, &numbers[0]);
    DBLL_sort(doubles);
    GL_release(&list);
    EL_release(&elements);
    ES_release(&stack);
    DBLL_release(&doubles);
}

void leave_alone(void **)
{
}

void use_a_simple_list()
{
    struct record {
        record *prev, *next;
    } records[most_items];
    SL_list *list = SL_create();
    for (record &each : records)
        SL_append_after_last(list, &each);
    SL_remove_item(list, &records[1]);
    SL_total_release(&list, leave_alone);
}

void use_tables()
{
    HSH_table *table = HSH_create(8, 0);
    mova_lookup *lookup = mova_lu_create();
    for (mova_word key = 1; key < most_items; ++key) {
        HSH_set_value(table, key, key);
        mova_lu_add(lookup, key, key);
    }
    HSH_iterator walk = HSH_all_entries(table);
    for (mova_word key, value; HSH_next(&walk, &key, &value);)
        mova_lu_remove(lookup, key);
    HSH_release(&table);
    mova_lu_release(&lookup, nullptr);
}

void use_arrays()
{
    GB_block block;
    GB_init(&block, sizeof(int), 1);
    DA_array *numbers = DA_create(sizeof(int32_t), 1), *ids = io_lut_create();
    for (int i = 0; i < most_items; ++i) {
        GB_append_after_last(&block, &i);
        SA_add_number(numbers, i);
        io_lut_add(ids, &block);
    }
    GB_release(&block);
    DA_release(numbers);
    io_lut_release(&ids);
}

uint32_t size_of(void *)
{
    return 100;
}
void fetch(void *, void *, uint32_t)
{
}
void write_back(void *, void *)
{
}
void let_go(void *)
{
}

void use_a_cache()
{
    mb_pool *pool = mb_create_pool(1000);
    cc_cache *cache = cc_create(pool);
    for (int i = 0; i < most_items; ++i)
        cc_get(cache, cc_insert(cache, nullptr, 0, size_of, fetch, write_back, let_go));
    mb_handle first = cc_alloc(cache, 300), second = cc_alloc(cache, 200);
    cc_free(cache, &first);
    first = cc_alloc(cache, 700);
    cc_free(cache, &first);
    cc_free(cache, &second);
    cc_make_empty(cache);
    MM_dealloc_item(cache, sizeof *cache);
    mb_release_pool(&pool);
}

int32_t compare(void *a, void *b)
{
    return (a > b) - (a < b);
}

void use_what_one_thread_has()
{
    char items[most_items];
    GT_tree *tree = GT_create_with_dupl_not_allowed(compare);
    for (char &item : items)
        GT_insert_item(tree, &item);
    GT_tree_iter *walk = GT_all_items(tree);
    for (GT_tree_item *at; GT_next_position(walk, &at);)
        GT_remove_item(tree, at);
    GT_release(&tree);
    CLUT_set(40, 1, 2, 3);
}

void make_a_mistake()
{
    GL_list *list = GL_create();
    const GL_list *const alias = list;
    GL_append_after_last(list, &list);
    GL_release(&list);
    jmp_buf here;
    leave_by = &here;
    if (setjmp(here) == 0)
        GL_count_items(alias);
}

void work(bool has_them_alone)
{
    for (int round = 0; round < rounds; ++round) {
        use_lists();
        use_a_simple_list();
        use_tables();
        use_arrays();
        use_a_cache();
        if (has_them_alone)
            use_what_one_thread_has();
        if (round % rounds_a_mistake == 0)
            make_a_mistake();
    }
}

} // namespace

int main()
{
    mova_checked_set_receiver(receive, nullptr);
    RGBLUT_init(64, nullptr, 0);
    std::vector<std::thread> working;
    for (int i = 0; i < threads; ++i)
        working.emplace_back(work, i == 0);
    for (std::thread &each : working)
        each.join();
    if (mistakes == threads * rounds / rounds_a_mistake && other_misuses == 0)
        return 0;
    std::fprintf(stderr, "%d mistakes and %d others were received\n", mistakes.load(), other_misuses.load());
    return 1;
}
