/* SPDX-License-Identifier: MIT */
/* Operations on two balanced trees, one with duplicates and one without, and up to eight iterators of all nine
   kinds, beside their models (modelled_tree.h). After every operation results, shapes, balances, order, iterators,
   counters, raises, comparisons, conditions asked and host calls are compared. */
#include "model.h"
#include "modelled_tree.h"

#include <mova/frame/internal/module_records.h>

#include <array>
#include <iterator>

namespace mova::test {

namespace {

/* Few keys, so that items are equal to each other. */
constexpr std::size_t key_count = 24;
constexpr std::size_t most_iterators = 8, most_items = 48;

class interpreter : public byte_interpreter {
public:
    using byte_interpreter::byte_interpreter;

private:
    using operation = void (interpreter::*)();

    void operate() override
    {
        static constexpr operation operations[] = {
            &interpreter::insert,         &interpreter::insert,         &interpreter::insert,
            &interpreter::insert,         &interpreter::insert,         &interpreter::insert,
            &interpreter::remove,         &interpreter::remove,         &interpreter::remove,
            &interpreter::remove_first,   &interpreter::remove_global,  &interpreter::remove_with_key,
            &interpreter::look_up,        &interpreter::strangers,      &interpreter::sort,
            &interpreter::print_or_count, &interpreter::dispose,        &interpreter::start_iterator,
            &interpreter::start_iterator, &interpreter::start_from,     &interpreter::step_iterator,
            &interpreter::step_iterator,  &interpreter::step_iterator,  &interpreter::step_iterator,
            &interpreter::end_iterator,   &interpreter::remove_current,
        };
        tree_ = &trees_[bytes_.below(trees_.size())];
        tree_->set_raises(bytes_.below(2) == 1 ? modelled_tree::raises::are_thrown
                                               : modelled_tree::raises::are_returned_from);
        do_one_of(operations);
    }

    void finish() override
    {
        for (modelled_tree &t : trees_)
            left_behind_ += t.release(false);
        expected_.require_nothing_left();
    }

    /* ---- what the operations choose ---- */

    int32_t any_key() { return static_cast<int32_t>(bytes_.below(key_count)); }
    std::size_t any_item() { return bytes_.below(tree_->size()); }
    std::size_t any_iterator() { return bytes_.below(tree_->iterator_count()); }
    modelled_tree::predicate any_condition()
    {
        return bytes_.below(2) == 1 ? modelled_tree::predicate::odd : modelled_tree::predicate::small;
    }
    int32_t any_mode() { return static_cast<int32_t>(bytes_.below(3)); }
    bool may_start() const { return trees_[0].iterator_count() + trees_[1].iterator_count() < most_iterators; }

    /* ---- operations ---- */

    void insert()
    {
        if (tree_->size() < most_items)
            tree_->insert(any_key());
    }

    void remove()
    {
        if (!tree_->size())
            return;
        const std::size_t index = any_item();
        bytes_.below(4) == 1 ? tree_->find_and_remove(index) : tree_->remove(index);
    }

    void remove_first() { tree_->remove_first(); }

    void remove_global()
    {
        if (tree_->size())
            tree_->remove_global(any_item());
    }

    void remove_with_key()
    {
        if (tree_->size()) {
            const std::size_t index = any_item();
            const int32_t key = any_key();
            tree_->remove_with_key(index, key, bytes_.below(2) == 1);
        }
    }

    void look_up()
    {
        tree_->search(any_key());
        tree_->find_stranger(any_key());
        if (tree_->size())
            tree_->find(any_item());
    }

    void strangers()
    {
        const int32_t key = any_key();
        switch (bytes_.below(3)) {
        case 0: return tree_->remove_stranger(key, false);
        case 1: return tree_->remove_stranger(key, true);
        default: return tree_->find_and_remove_stranger(key);
        }
    }

    void sort()
    {
        std::vector<std::pair<std::size_t, int32_t>> changed;
        for (std::size_t i = bytes_.below(4); i > 0 && tree_->size(); --i) {
            const std::size_t index = any_item();
            const int32_t key = any_key();
            const bool is_new = std::none_of(changed.begin(), changed.end(), [&](auto &c) { return c.second == key; });
            if (tree_->admits(key) && is_new)
                changed.emplace_back(index, key);
        }
        tree_->sort_with_keys(changed);
    }

    void print_or_count() { bytes_.below(2) == 1 ? tree_->print() : tree_->count(); }

    /* Seldom, so that the trees grow. */
    void dispose()
    {
        const std::size_t how = bytes_.below(16);
        if (how < 2)
            tree_->make_empty(how == 1);
        if (how < 2 || how >= 4)
            return;
        left_behind_ += tree_->release(how == 3);
        tree_->create();
    }

    void start_iterator()
    {
        if (!may_start())
            return;
        const modelled_tree::predicate condition = any_condition();
        tree_->start(condition, any_mode());
    }

    void start_from()
    {
        if (!may_start() || !tree_->iterator_count())
            return;
        const std::size_t given = any_iterator();
        if (!tree_->may_copy(given))
            return;
        const bool current = bytes_.below(2) == 1;
        const modelled_tree::predicate condition = any_condition();
        tree_->start_from(given, current, condition, any_mode());
    }

    void step_iterator()
    {
        if (!tree_->iterator_count())
            return;
        const std::size_t iterator = any_iterator();
        if (tree_->may_step(iterator))
            tree_->step(iterator, bytes_.below(2) == 1);
    }

    /* Removes what an iterator has delivered last, as programs do while they walk. */
    void remove_current()
    {
        if (!tree_->iterator_count())
            return;
        const std::ptrdiff_t index = tree_->index_of_current(any_iterator());
        if (index >= 0)
            tree_->remove(static_cast<std::size_t>(index));
    }

    void end_iterator()
    {
        if (tree_->iterator_count())
            tree_->end(any_iterator());
    }

    /* ---- comparison ---- */

    void compare() override
    {
        std::size_t nodes = 0, iterators = 0;
        for (const modelled_tree &t : trees_) {
            t.compare();
            nodes += t.size();
            iterators += t.iterator_count();
        }
        const tree_module_record &now = modules.gentree;
        auto counts = [](int32_t counted, int32_t before, std::size_t live, int32_t dead) {
            return counted - before == static_cast<int32_t>(live) + dead;
        };
        require(counts(now.live_trees, before_.live_trees, trees_.size(), 0), "another counter of trees");
        require(counts(now.live_nodes, before_.live_nodes, nodes, 0), "another counter of nodes");
        require(counts(now.live_iterators, before_.live_iterators, iterators, left_behind_),
                "another counter of iterators");
    }

    const tree_module_record before_ = modules.gentree;
    expected_calls expected_;
    std::array<modelled_tree, 2> trees_{modelled_tree(expected_, true), modelled_tree(expected_, false)};
    modelled_tree *tree_ = nullptr;
    int32_t left_behind_ = 0;
};

[[maybe_unused]] const bool added = add_model({.family = "balanced_tree",
                                               .run = run_interpreter<interpreter>,
                                               .long_runs = {250, 2000},
                                               .short_runs = {1500, 40}});

} // namespace

} // namespace mova::test
