/* SPDX-License-Identifier: MIT */
/* Programs that are right, and look as if they were not: nothing may be said of them. With OWN_MEMORY they have a memory service
   of their own, which gives the block that was freed last, so that records of all kinds lie where others lay. */
#include <mova/arrays/block_array.h>
#include <mova/arrays/dynamic_array.h>
#include <mova/cache/swap_cache.h>
#include <mova/clut/colour_table.h>
#include <mova/cxx/balanced_tree.h>
#include <mova/cxx/element_list.h>
#include <mova/cxx/pointer_list.h>
#include <mova/frame/host.h>
#include <mova/hash/hash_table.h>
#include <mova/host/errors.h>
#include <mova/host/memory_blocks.h>
#include <mova/lists/generic_list.h>
#include <mova/lists/simple_list.h>

#include <atomic>
#include <cerrno>
#include <compare>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <thread>
#include <utility>

#include <setjmp.h>
#include <sys/wait.h>
#include <ucontext.h>
#include <unistd.h>

#ifdef OWN_MEMORY
namespace {

constexpr size_t largest_small = 256;
void *freed_last;

} // namespace

extern "C" {
void *MM_alloc_item(size_t size)
{
    if (size > largest_small)
        return std::malloc(size);
    if (!freed_last)
        return std::malloc(largest_small);
    return std::exchange(freed_last, *static_cast<void **>(freed_last));
}

void MM_dealloc_item(void *item, size_t size)
{
    if (size > largest_small)
        std::free(item);
    else if (item)
        *static_cast<void **>(item) = std::exchange(freed_last, item);
}

void *MM_realloc_item(void *item, size_t old_size, size_t new_size)
{
    auto *const moved = static_cast<unsigned char *>(MM_alloc_item(new_size));
    for (size_t i = 0; item && i < old_size && i < new_size; ++i)
        moved[i] = static_cast<unsigned char *>(item)[i];
    MM_dealloc_item(item, old_size);
    return moved;
}
}
#endif

namespace {

int items[8];

struct by_value {
    auto operator()(const int &a, const int &b) const { return a <=> b; }
};
using sorted = mova::balanced_set<int, by_value>;

GL_list *list_of(int count)
{
    GL_list *list = GL_create();
    for (int i = 0; i < count; ++i)
        GL_append_after_last(list, &items[i]);
    return list;
}

/* ---- records where others lay ---- */

/* Nobody tells of the cache's end, nor of the node that comes to lie there. */
void node_where_a_cache_lay()
{
    mb_pool *pool = mb_create_pool(64);
    mova::element_list<int> list;
    EL_append_after_last(list.get(), &items[0]);
    cc_cache *cache = cc_create(pool);
    MM_dealloc_item(cache, sizeof *cache);
    const auto last = list.append(2);
    mova::element_list<int> part = list.split(list.begin());
    EL_insert_after(part.get(), last.get(), &items[0]);
    mb_release_pool(&pool);
}

void node_where_a_removed_one_lay()
{
    sorted tree;
    for (int i = 0; i < 3; ++i)
        GT_insert_item(tree.get(), &items[i]);
    GT_remove_item(tree.get(), tree.get()->first);
    GT_tree_item *const node = tree.insert(items[0]).first.get();
    GT_tree_iter *walk = GT_all_items(tree.get()), *copy;
    GT_tree_item *at;
    GT_next_position(walk, &at);
    copy = GT_from_current(walk);
    GT_remove_item(tree.get(), node);
    GT_end_iterator(copy);
    GT_end_iterator(walk);
}

void node_where_an_iterator_lay()
{
    sorted tree;
    auto other = std::make_unique<sorted>();
    other->insert(items[0]);
    {
        auto cursor = other->positions();
        cursor.begin();
        other.reset();
    }
    GT_remove_item(tree.get(), tree.insert(items[1]).first.get());
}

void item_where_a_list_lay()
{
    void *const block = MM_alloc_item(sizeof(GL_list));
    SL_list *list = SL_create();
    SL_append_after_last(list, block);
    SL_remove_item(list, block);
    MM_dealloc_item(block, sizeof(GL_list));
    GL_list *other = list_of(2);
    GL_release(&other);
    void *const again = MM_alloc_item(sizeof(GL_list));
    SL_append_after_last(list, again);
    SL_remove_item(list, again);
    MM_dealloc_item(again, sizeof(GL_list));
    SL_release(&list);
}

/* ---- edits while walking ---- */

void edits_of_a_walked_list()
{
    GL_list *list = list_of(6), *joined = list_of(2);
    GL_iterator walk = GL_all_items(list), copy;
    GL_node *at;
    GL_next_position(&walk, &at);
    GL_remove_item(list, at);
    GL_insert_before_first(list, &items[0]);
    GL_next_position(&walk, &at);
    copy = walk;
    GL_move_before_first(list, walk.end);
    GL_append_list(joined, &list);
    while (GL_next_position(&copy, &at))
        GL_swap_item(at, &at->item);
    while (GL_next_position(&walk, &at))
        ;
    GL_release(&joined);
}

void edits_of_a_walked_tree()
{
    sorted tree;
    for (int &item : items)
        GT_insert_item(tree.get(), &item);
    GT_tree_iter *walk = GT_all_items(tree.get());
    for (GT_tree_item *at; GT_next_position(walk, &at);)
        GT_remove_item(tree.get(), at);
}

void walks_of_a_table()
{
    HSH_table *table = HSH_create(8, 0), *other = HSH_create(8, 0);
    for (mova_word key = 1; key < 6; ++key)
        HSH_set_value(table, key, key);
    HSH_iterator walk = HSH_all_entries(table);
    mova_word key, value;
    while (HSH_next(&walk, &key, &value) && key != 3)
        HSH_set_value(table, key, -key);
    HSH_remove_entry(table, key);
    std::swap(table, other);
    walk = HSH_all_entries(table);
    HSH_next(&walk, &key, &value);
    walk = HSH_all_entries(other);
    for (HSH_iterator inner = walk; HSH_next(&inner, &key, &value);)
        HSH_next(&walk, &key, &value);
    HSH_release(&table);
    HSH_release(&other);
}

DA_array *edited_array;

int append_while_tested(void *)
{
    if (DA_nitems(edited_array) < 9)
        DA_append(edited_array, &items[0], 1);
    return 1;
}

void array_edited_by_its_test()
{
    edited_array = DA_create(sizeof(int), 1);
    DA_append(edited_array, items, 3);
    DA_iterator walk = DA_tested_items(edited_array, append_while_tested);
    for (void *item; DA_next(&walk, &item);)
        ;
    DA_release(edited_array);
}

/* ---- callbacks that do what they may ---- */

GL_list *read_by_test, *filled_by_test;

int reads_its_list(void *item)
{
    GL_iterator inner = GL_all_items(read_by_test);
    for (void *each; GL_next_item(&inner, &each);)
        ;
    GL_append_after_last(filled_by_test, item);
    return GL_count_items(read_by_test) != 0;
}

SL_list *taker;

void links_elsewhere(void **item)
{
    SL_append_after_last(taker, *item);
    *item = nullptr;
}

void leaves_alone(void **)
{
}

void callbacks_of_lists()
{
    read_by_test = list_of(4);
    filled_by_test = GL_create();
    GL_iterator walk = GL_tested_items(read_by_test, reads_its_list);
    for (void *item; GL_next_item(&walk, &item);)
        ;
    GL_release(&read_by_test);
    GL_release(&filled_by_test);

    struct record {
        record *prev, *next;
    } records[3];
    taker = SL_create();
    SL_list *list = SL_create();
    for (record &each : records)
        SL_append_after_last(list, &each);
    SL_total_release(&list, links_elsewhere);
    SL_total_release(&taker, leaves_alone);
}

cc_cache *cache_of_callbacks;
cc_entry *other_entry;

uint32_t size_of(void *)
{
    return 48;
}
void fetch(void *, void *, uint32_t)
{
    cc_entry *const entry = std::exchange(other_entry, nullptr);
    if (entry)
        cc_get(cache_of_callbacks, entry);
}
void remove_another(void *, void *, uint32_t)
{
    if (other_entry)
        cc_remove(cache_of_callbacks, &other_entry);
}
void write_back(void *, void *)
{
}
void let_go(void *)
{
}

/* The head ends as its header says: by the memory service. */
void callbacks_of_a_cache()
{
    mb_pool *pool = mb_create_pool(256);
    cc_cache *const cache = cache_of_callbacks = cc_create(pool);
    cc_entry *const first = cc_insert(cache, &items[0], 0, size_of, fetch, write_back, let_go);
    cc_entry *const second = cc_insert(cache, &items[1], 0, size_of, remove_another, write_back, let_go);
    other_entry = second;
    cc_get(cache, first);
    cc_swap_out(cache, second);
    other_entry = first;
    cc_get(cache, second);
    cc_make_empty(cache);
    MM_dealloc_item(cache, sizeof *cache);
    mb_release_pool(&pool);
}

void sets_more(int32_t index, int16_t, int16_t, int16_t)
{
    if (index == 40)
        CLUT_set(41, 1, 2, 3);
}

void callbacks_of_the_colour_table()
{
    RGBLUT_init(64, sets_more, 0);
    CLUT_set(40, 1, 2, 3);
    CLUT_copy(41, 40);
}

/* ---- calls that are left ---- */

jmp_buf back;
bool leaves_by_jump;

void *leaves(void *item)
{
    if (item == &items[2] && leaves_by_jump)
        longjmp(back, 1);
    if (item == &items[2])
        throw std::runtime_error("no more");
    return item;
}

void calls_left(bool by_jump)
{
    GL_list *const list = list_of(4);
    leaves_by_jump = by_jump;
    try {
        if (setjmp(back) == 0)
            std::exit(GL_total_copy(list, leaves) ? 3 : 4);
    } catch (const std::runtime_error &) {
    }
    GL_remove_item(list, list->first);
    GL_list *ended = list;
    GL_release(&ended);
}

void calls_left_by_an_exception()
{
    calls_left(false);
}

void calls_left_by_a_jump()
{
    calls_left(true);
}

void go_on(const char *, int32_t, int32_t)
{
}

/* The error service returns, and the functions do what their headers say then. */
void raises_that_return()
{
    const mova_error_handler before = mova_set_error_handler(go_on);
    struct {
        void *links[2];
    } item;
    SL_list *list = SL_create();
    SL_append_after_last(list, &item);
    SL_release(&list);
    list = SL_create();
    SL_append_after_last(list, &item);
    SL_remove_item(list, &item);
    SL_release(&list);
    sorted tree;
    GT_find_and_remove_item(tree.get(), &items[0]);
    GT_remove_first_item(tree.get());
    tree.insert(items[0]);
    GT_remove_first_item(tree.get());
    mova_set_error_handler(before);
}

/* ---- owners, copies, other stacks, threads and processes ---- */

void owners_that_change()
{
    mova::pointer_list<int> a, b;
    a.append(&items[0]);
    b.append(&items[1]);
    GL_iterator walk = GL_all_items(a.get());
    std::swap(a, b);
    void *item;
    GL_next_item(&walk, &item);
    GL_node *const moved = a.get()->first;
    b.append(std::move(a));
    GL_remove_item(b.get(), moved);
    a = mova::pointer_list<int>();
    a.append(std::move(b));

    GB_block one, copy;
    GB_init(&one, sizeof(int), 1);
    GB_append_after_last(&one, &items[0]);
    copy = one;
    GB_append_after_last(&copy, &items[1]);
    one = copy;
    GB_release(&one);
}

ucontext_t main_stack, other_stack;
GL_list *used_on_both;

void *switches(void *item)
{
    swapcontext(&other_stack, &main_stack);
    return item;
}

void on_the_other_stack()
{
    GL_list *list = list_of(3), *copy = GL_total_copy(list, switches);
    GL_release(&copy);
    GL_append_after_last(used_on_both, &items[0]);
    GL_release(&list);
}

/* A call waits in its callback on a stack of its own, while the program goes on elsewhere. */
void two_stacks()
{
    constexpr size_t size = size_t{1} << 18;
    const std::unique_ptr<char[]> stack(new char[size]);
    used_on_both = list_of(2);
    getcontext(&other_stack);
    other_stack.uc_stack.ss_sp = stack.get();
    other_stack.uc_stack.ss_size = size;
    other_stack.uc_link = &main_stack;
    makecontext(&other_stack, on_the_other_stack, 0);
    for (int turn = 0; turn < 4; ++turn) {
        GL_append_after_last(used_on_both, &items[1]);
        swapcontext(&main_stack, &other_stack);
    }
    GL_release(&used_on_both);
}

/* A child has but one of the threads, whatever the others were doing. */
void processes()
{
    std::atomic<bool> stops = false;
#ifdef OWN_MEMORY
    std::thread other([] {});
#else
    std::thread other([&] {
        GL_list *list = list_of(2);
        while (!stops)
            GL_move_before_first(list, list->last);
        GL_release(&list);
    });
#endif
    for (int i = 0; i < 200; ++i) {
        GL_list *list = list_of(3);
        const pid_t child = fork();
        if (child == 0) {
            std::thread([&] { GL_append_after_last(list, &items[0]); }).join();
            GL_release(&list);
            _exit(0);
        }
        int status;
        waitpid(child, &status, 0);
        GL_release(&list);
        if (status != 0)
            std::exit(2);
    }
    stops = true;
    other.join();
}

/* One after the other, and each with a list of its own. */
void threads()
{
    GL_list *handed = list_of(3);
    std::thread([&] { GL_append_after_last(handed, &items[0]); }).join();
    GL_remove_item(handed, handed->first);
    std::thread([&] { GL_release(&handed); }).join();
}

/* A signal comes while the program is in no call of the library, and in a callback of one. */
void handle_with_a_list(int)
{
    const int kept_errno = errno;
    GL_list *list = list_of(2);
    GL_remove_item(list, list->first);
    GL_release(&list);
    errno = kept_errno;
}

void *copies_and_signals(void *item)
{
    raise(SIGUSR1);
    return item;
}

void calls_of_a_handler()
{
    signal(SIGUSR1, handle_with_a_list);
    raise(SIGUSR1);
    GL_list *list = list_of(2), *copy = GL_total_copy(list, copies_and_signals);
    GL_release(&copy);
    GL_release(&list);
    signal(SIGUSR1, SIG_DFL);
}

void (*const programs[])() = {
    node_where_a_cache_lay,
    node_where_a_removed_one_lay,
    node_where_an_iterator_lay,
    item_where_a_list_lay,
    edits_of_a_walked_list,
    edits_of_a_walked_tree,
    walks_of_a_table,
    array_edited_by_its_test,
    callbacks_of_lists,
    callbacks_of_a_cache,
    callbacks_of_the_colour_table,
    calls_left_by_an_exception,
    calls_left_by_a_jump,
    raises_that_return,
    owners_that_change,
    two_stacks,
    calls_of_a_handler,
    threads,
    processes,
};

} // namespace

int main()
{
    for (int i = 0; i < 8; ++i)
        items[i] = i;
    for (const auto program : programs)
        program();
}
