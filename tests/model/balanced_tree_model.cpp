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
    explicit interpreter(byte_source bytes) : byte_interpreter(bytes)
    {
        if (bytes_.is_exhaustive())
            used_ = bytes_.below(trees_.size());
    }

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
        tree_ = &trees_[bytes_.is_exhaustive() ? used_ : bytes_.below(trees_.size())];
        const std::size_t throws = bytes_.is_exhaustive() ? tree_->size() % 2 : bytes_.below(2);
        tree_->set_raises(throws == 1 ? modelled_tree::raises::are_thrown : modelled_tree::raises::are_returned_from);
        do_one_of(operations);
    }

    void finish() override
    {
        for (modelled_tree &t : trees_)
            left_behind_ += t.release(false);
        expected_.require_nothing_left();
    }

    /* Where every small case is tried there is one tree and one iterator. Trees that may have equal keys, or have odd ones and
       iterators that ask for those, are smaller: there are many more of them. */
    bool describe(state_text &state, std::size_t most) const override
    {
        const modelled_tree &t = trees_[used_];
        state.add(used_);
        t.describe(state);
        bool has_odd = false;
        for (std::size_t i = 0; i < t.size(); ++i)
            has_odd |= t.key_at(i) % 2 != 0;
        const bool asks = t.iterator_count() > 0 && t.has_condition(0);
        return t.size() + (has_odd || asks ? 4 : 0) + (used_ == with_equal_ones ? 3 : 0) <= most &&
               t.iterator_count() <= 1 && left_behind_ == 0;
    }

    /* ---- what the operations choose ---- */

    int32_t any_key() { return bytes_.is_exhaustive() ? any_rank() : static_cast<int32_t>(bytes_.below(key_count)); }

    /* One of the keys that are there, or one between two of them, in the middle; in a small tree an odd one too. */
    int32_t any_rank() { return key_of_rank(bytes_.below(2 * tree_->size() + 1)); }

    /* One for an item that is there: its own, the least or the greatest. */
    int32_t any_new_key(std::size_t index)
    {
        if (!bytes_.is_exhaustive())
            return any_key();
        const std::size_t ranks[] = {0, 2 * index + 1, 2 * tree_->size()};
        return key_of_rank(ranks[bytes_.below(std::size(ranks))]);
    }

    int32_t key_of_rank(std::size_t rank)
    {
        const std::size_t index = rank / 2;
        if (rank % 2 == 1)
            return tree_->key_at(index);
        const int64_t low = index == 0 ? -(int64_t{1} << 31) : tree_->key_at(index - 1);
        const int64_t high = index == tree_->size() ? int64_t{1} << 31 : tree_->key_at(index);
        const int64_t key = (low + high) / 2 / 2 * 2;
        const auto odd = static_cast<int32_t>(tree_->size() < 4 ? bytes_.below(2) : 0);
        return static_cast<int32_t>(key) + odd;
    }
    std::size_t any_item() { return bytes_.below(tree_->size()); }
    std::size_t any_iterator() { return bytes_.below(tree_->iterator_count()); }
    modelled_tree::predicate any_condition()
    {
        return bytes_.below(2, 1) == 1 ? modelled_tree::predicate::odd : modelled_tree::predicate::small;
    }
    int32_t any_mode() { return static_cast<int32_t>(bytes_.below(3, tree_->size() < 5 ? 3 : 1)); }
    bool may_start() const
    {
        return trees_[0].iterator_count() + trees_[1].iterator_count() < (bytes_.is_exhaustive() ? 1 : most_iterators);
    }

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
        bytes_.below(4, 2) == 1 ? tree_->find_and_remove(index) : tree_->remove(index);
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
            const int32_t key = any_new_key(index);
            tree_->remove_with_key(index, key, bytes_.below(2) == 1);
        }
    }

    void look_up()
    {
        const int32_t key = any_key();
        tree_->search(key);
        tree_->find_stranger(bytes_.is_exhaustive() ? key : any_key());
        for (std::size_t i = 0; bytes_.is_exhaustive() && i < tree_->size(); ++i)
            tree_->find(i);
        if (tree_->size() && !bytes_.is_exhaustive())
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
        for (std::size_t i = bytes_.below(4, 2); i > 0 && tree_->size(); --i) {
            const std::size_t index = any_item();
            const int32_t key = any_new_key(index);
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
        const std::size_t how = bytes_.below(16, 5);
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
    static constexpr std::size_t with_equal_ones = 0;
    std::size_t used_ = with_equal_ones; /* where every small case is tried */
};

[[maybe_unused]] const bool added = add_model<interpreter>("balanced_tree", {250, 2000}, {1500, 40}, {4, 8});

} // namespace

} // namespace mova::test
