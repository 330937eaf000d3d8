/* SPDX-License-Identifier: MIT */
#ifndef MOVA_TESTS_MODEL_MODELLED_TREE_H
#define MOVA_TESTS_MODEL_MODELLED_TREE_H

#include "expected_calls.h"
#include "model.h"
#include "reference_tree.h"

#include <set>
#include <vector>

namespace mova::test {

/* A balanced tree beside its model: a reference_tree for its shape, a multiset for the order of its items, and a copy
   of each iterator that follows the rules of the header. Each operation does both, and says which calls it expects;
   compare() throws mismatch where anything differs. The items are blocks of the recording host's. */
class modelled_tree {
public:
    enum class raises { are_thrown, are_returned_from };

    enum class predicate { odd, small };

    modelled_tree(expected_calls &expected, bool dupl_allowed);

    /* Makes the tree anew after its release. */
    void create();

    void set_raises(raises how) { raises_ = how; }

    std::size_t size() const { return order_.size(); }
    tree_item *position_at(std::size_t index) const;
    std::size_t iterator_count() const { return iterators_.size(); }
    bool has_key(int32_t key) const;
    int32_t key_at(std::size_t index) const;
    bool admits(int32_t key) const { return dupl_allowed_ || !has_key(key); }

    void insert(int32_t key);
    void find(std::size_t index);
    void find_stranger(int32_t key);
    void search(int32_t key);
    void count();

    void remove(std::size_t index);
    void remove_global(std::size_t index);
    void find_and_remove(std::size_t index);
    void remove_first();
    void remove_stranger(int32_t key, bool global);
    void find_and_remove_stranger(int32_t key);

    /* Gives an item another key, and removes its node globally; or first tries by comparison. */
    void remove_with_key(std::size_t index, int32_t key, bool try_by_comparison);

    /* Gives the items at these indices these keys, and sorts. */
    void sort_with_keys(const std::vector<std::pair<std::size_t, int32_t>> &changed);

    void make_empty(bool total);

    /* Returns how many iterators the tree left behind; they are freed, and stay counted. */
    int32_t release(bool total);
    void print();

    void start(predicate condition, int32_t mode);
    void start_from(std::size_t iterator, bool current, predicate condition, int32_t mode);
    /* An edit may have left an iterator on a released record. Then it may not be copied from; with its `cursor`
       there, not even be stepped. */
    bool may_step(std::size_t iterator) const;
    bool may_copy(std::size_t iterator) const;
    bool has_condition(std::size_t iterator) const { return iterators_.at(iterator).model.mode != 0; }
    /* -1 where there is no current node in the tree. */
    std::ptrdiff_t index_of_current(std::size_t iterator) const;
    void step(std::size_t iterator, bool position);
    void end(std::size_t iterator);

    void compare() const;

    /* The shape, which neighbours are equal, which keys are odd, and where the iterators are. */
    void describe(state_text &state) const;

private:
    struct record {
        int32_t key, number;
    };

    struct by_key {
        bool operator()(const record *a, const record *b) const { return a->key < b->key; }
    };

    struct iterator_pair {
        tree_iter *real;
        tree_iter model;
    };

    struct removal {
        tree_item *position, *next, *replaced_by; /* the last is null unless the node has two children */
    };

    static int32_t order_of(const record &a, const record &b);
    static int32_t compare_recorded(void *a, void *b);
    static int32_t compare_silently(void *a, void *b);
    static int32_t odd(void *item);
    static int32_t small(void *item);
    static void print_item(void *item);
    static GT_condition function_of(predicate condition);
    static bool accepts(GT_condition condition, const record &item);

    record *new_record(int32_t key);
    void free_record(record *item);
    reference_tree::compare asking(const record &key);
    template <class Call>
    void expect_raise(int32_t line, Call call);

    bool is_here(const tree_item *position) const { return !position || neighbour(position, 0); }
    int64_t index_of(const tree_item *position) const;
    static void describe(state_text &state, const reference_tree::link &n);
    tree_item *neighbour(const tree_item *position, int distance) const;
    removal removal_of(tree_item *position) const;
    void expect_removal(const removal &removed);
    void forget(const removal &removed);
    void erase_from_order(record *item);
    int pass(std::vector<record *> &items, std::size_t bound);
    void expect_nodes_freed(bool total);
    void expect_printed(const reference_tree::link &n, int depth);
    iterator_pair &add(tree_iter *real, tree_item *cursor, GT_condition condition, int32_t mode);
    tree_iter fresh_model(tree_item *cursor, int32_t mode) const;
    const tree_item *step_model(tree_iter &model);
    void expect_end(std::size_t iterator);

    void compare_shape(const reference_tree::link &expected, const tree_item *node) const;
    void compare_iterators() const;

    expected_calls &expected_;
    recording_host &host_ = recording_host::get();
    raises raises_ = raises::are_thrown;
    bool dupl_allowed_;
    tree *real_ = nullptr;
    reference_tree shape_;
    std::multiset<record *, by_key> order_;
    std::vector<iterator_pair> iterators_; /* in the order in which they were made */
    int32_t last_number_ = 0;
};

} // namespace mova::test

#endif
