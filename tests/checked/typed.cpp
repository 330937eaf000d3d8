/* SPDX-License-Identifier: MIT */
/* Misuses in C++: of the C functions, and through the typed layer. The place is the program's, not the layer's. */
#include <mova/cxx/element_list.h>
#include <mova/cxx/pointer_list.h>
#include <mova/lists/generic_list.h>

#include <stdexcept>

#include <mova/cxx/balanced_tree.h>
#include <mova/cxx/block_array.h>
#include <mova/cxx/hash_table.h>

#include <compare>
#include <memory>

#include "misuse.h"

namespace {

int items[3];

void fill(auto &list)
{
    for (int &item : items)
        list.append(&item);
}

void removed_in_another_list(int misused)
{
    mova::pointer_list<int> list, other;
    fill(list);
    fill(other);
    GL_remove_item(misused ? other.get() : list.get(), list.get()->first);
}

void moved_in_another_list(int misused)
{
    mova::pointer_list<int> list, other;
    fill(list);
    fill(other);
    list.move_to_front(misused ? other.begin() : list.begin());
}

void rolled_to_another_ring(int misused)
{
    mova::element_list<int> list, other;
    for (const int number : items) {
        list.append(number);
        other.append(number);
    }
    EL_set_closed(list.get());
    EL_set_closed(other.get());
    EL_roll(list.get(), misused ? other.get()->last : list.get()->last);
}

/* The list that a copy is to edit while it is made. */
GL_list *edited;

void *copy(void *item)
{
    if (edited)
        GL_append_after_last(edited, item);
    return item;
}

void edited_by_copy(int misused)
{
    mova::pointer_list<int> list;
    fill(list);
    edited = misused ? list.get() : nullptr;
    GL_list *made = GL_total_copy(list.get(), copy);
    GL_release(&made);
}

void *copy_or_throw(void *item)
{
    if (item == &items[2])
        throw std::runtime_error("no more");
    return item;
}

/* A call that an exception has ended is over. */
void used_after_an_exception(int misused)
{
    GL_list *list = GL_create();
    for (int &item : items)
        GL_append_after_last(list, &item);
    try {
        GL_list *made = GL_total_copy(list, copy_or_throw);
        GL_release(&made);
    } catch (const std::runtime_error &) {
        GL_make_empty(list);
    }
    GL_list *alias = list;
    GL_release(&list);
    if (misused)
        GL_make_empty(alias);
}

/* ---- containers that are no lists ---- */

struct by_value {
    auto operator()(const int &a, const int &b) const { return a <=> b; }
};

void cursor_outlived_its_tree(int misused)
{
    auto tree = std::make_unique<mova::balanced_set<int, by_value>>();
    tree->insert(items[0]);
    auto cursor = tree->positions();
    GT_tree_item *at;
    if (misused)
        tree.reset();
    GT_next_position(cursor.get(), &at);
}

void node_freed_twice(int misused)
{
    mova::balanced_set<int, by_value> tree;
    GT_tree_item *const node = tree.insert(items[0]).first.get();
    GT_tree_item *const alone = GT_allocate_node(&items[1]);
    tree.remove(tree.begin());
    GT_free_node(alone);
    if (misused)
        GT_free_node(node);
}

void index_past_the_end(int misused)
{
    mova::block_array<int> array;
    array.append(1);
    GB_remove_item(array.get(), misused ? 1 : 0);
}

void walked_and_edited(int misused)
{
    mova::hash_table<mova_word, mova_word> table;
    HSH_set_value(table.get(), 1, 1);
    HSH_set_value(table.get(), 2, 2);
    HSH_iterator walk = HSH_all_entries(table.get());
    mova_word key, value;
    HSH_next(&walk, &key, &value);
    if (misused)
        HSH_remove_entry(table.get(), key);
    HSH_next(&walk, &key, &value);
}

const misuse_cell cells[] = {
    {"cursor outlived its tree", 4, "GT_next_position: the iterator outlived its tree", cursor_outlived_its_tree},
    {"node freed twice", 3, "GT_free_node: the position was removed", node_freed_twice},
    {"index past the end", 7, "GB_remove_item: the index is out of range", index_past_the_end},
    {"walked and edited", 11, "HSH_next: the table was edited while it is walked", walked_and_edited},
    {"used after an exception", 2, "GL_make_empty: the list was released", used_after_an_exception},
    {"removed in another list", 3, "GL_remove_item: the position is not of the list", removed_in_another_list},
    {"moved in another list", 3, "GL_move_before_first: the position is not of the list", moved_in_another_list},
    {"rolled to another ring", 3, "EL_roll: the position is not of the list", rolled_to_another_ring},
    {"edited by copy", 9, "GL_append_after_last: the list is calling back in GL_total_copy", edited_by_copy},
};

} // namespace

int main(int arguments, char **argument)
{
    return run_cell(cells, sizeof cells / sizeof cells[0], arguments, argument);
}
