/* SPDX-License-Identifier: MIT */
#include "modelled_tree.h"

#include <mova/tree/internal/invariants.h>

#include <cstring>
#include <iterator>

namespace mova::test {

/* ---- items and what the tree asks about them ---- */

int32_t modelled_tree::order_of(const record &a, const record &b)
{
    return a.key < b.key ? -3 : a.key > b.key ? 5 : 0;
}

int32_t modelled_tree::compare_recorded(void *a, void *b)
{
    const record &left = *static_cast<record *>(a), &right = *static_cast<record *>(b);
    recording_host::get().write_down("compare " + std::to_string(left.number) + " " + std::to_string(right.number));
    return order_of(left, right);
}

int32_t modelled_tree::compare_silently(void *a, void *b)
{
    return order_of(*static_cast<record *>(a), *static_cast<record *>(b));
}

int32_t modelled_tree::odd(void *item)
{
    const record &asked = *static_cast<record *>(item);
    recording_host::get().write_down("ask " + std::to_string(asked.number));
    return asked.key % 2;
}

int32_t modelled_tree::small(void *item)
{
    const record &asked = *static_cast<record *>(item);
    recording_host::get().write_down("ask " + std::to_string(asked.number));
    return asked.key < 8 ? -1 : 0;
}

bool modelled_tree::accepts(GT_condition condition, const record &item)
{
    return condition == odd ? item.key % 2 != 0 : item.key < 8;
}

GT_condition modelled_tree::function_of(predicate condition)
{
    return condition == predicate::odd ? odd : small;
}

void modelled_tree::print_item(void *item)
{
    recording_host::get().write_down("print " + std::to_string(static_cast<record *>(item)->number));
}

modelled_tree::record *modelled_tree::new_record(int32_t key)
{
    expected_.alloc(sizeof(record));
    auto *item = static_cast<record *>(MM_alloc_item(sizeof(record)));
    *item = {key, ++last_number_};
    return item;
}

void modelled_tree::free_record(record *item)
{
    expected_.dealloc(item, sizeof *item);
    MM_dealloc_item(item, sizeof *item);
}

reference_tree::compare modelled_tree::asking(const record &key)
{
    return [this, key](void *item) {
        const record &other = *static_cast<record *>(item);
        expected_.call("compare " + std::to_string(key.number) + " " + std::to_string(other.number));
        return order_of(key, other);
    };
}

/* ---- creation ---- */

modelled_tree::modelled_tree(expected_calls &expected, bool dupl_allowed)
    : expected_(expected), dupl_allowed_(dupl_allowed)
{
    create();
}

void modelled_tree::create()
{
    expected_.alloc(sizeof(tree));
    expected_.alloc(sizeof(GL_list));
    real_ = dupl_allowed_ ? GT_create_with_dupl_allowed(compare_recorded)
                          : GT_create_with_dupl_not_allowed(compare_recorded);
}

/* Runs the call; a `line` other than 0 is one that it must raise. */
template <class Call>
void modelled_tree::expect_raise(int32_t line, Call call)
{
    if (line)
        expected_.raise("gentree", line, MOVA_PRECONDITION_BROKEN);
    expected_.returns_from(line != 0, raises_ == raises::are_thrown, call);
}

/* ---- positions ---- */

tree_item *modelled_tree::position_at(std::size_t index) const
{
    return const_cast<tree_item *>(shape_.in_order().at(index)->position);
}

int32_t modelled_tree::key_at(std::size_t index) const
{
    return static_cast<const record *>(position_at(index)->item)->key;
}

bool modelled_tree::has_key(int32_t key) const
{
    record sought{key, 0};
    return order_.contains(&sought);
}

/* The position so far from a node, or null: past either end, and of a node that is not in the tree. */
tree_item *modelled_tree::neighbour(const tree_item *position, int distance) const
{
    const std::vector<reference_tree::node *> nodes = shape_.in_order();
    for (int i = 0, count = static_cast<int>(nodes.size()); i < count; ++i) {
        if (nodes[static_cast<std::size_t>(i)]->position == position && i + distance >= 0 && i + distance < count)
            return const_cast<tree_item *>(nodes[static_cast<std::size_t>(i + distance)]->position);
    }
    return nullptr;
}

/* ---- insertion and search ---- */

void modelled_tree::insert(int32_t key)
{
    record *item = new_record(key);
    reference_tree::link added(new reference_tree::node{nullptr, item, nullptr, nullptr});
    reference_tree::node *inserted = added.get();
    const reference_tree::node *in_the_way = shape_.insert(std::move(added), asking(*item), dupl_allowed_);
    if (!in_the_way)
        expected_.alloc(sizeof(tree_item));
    tree_item *position = GT_insert_item(real_, item);
    if (in_the_way) {
        require(position == in_the_way->position, "insertion returned another position");
        return free_record(item);
    }
    inserted->position = position;
    order_.insert(item);
    for (iterator_pair &pair : iterators_) {
        if (pair.model.current && neighbour(pair.model.current, 1) == position)
            pair.model.cursor = position;
    }
}

void modelled_tree::find(std::size_t index)
{
    tree_item *position = position_at(index), *found = nullptr;
    void *item = position->item;
    require(shape_.find(item, asking(*static_cast<record *>(item)))->position == position, "the model lost an item");
    require(GT_find_item(real_, item, &found) == 1, "did not find an item");
    require(found == position, "found another position");
}

void modelled_tree::find_stranger(int32_t key)
{
    record stranger{key, 0};
    tree_item *found = real_->first;
    shape_.find(&stranger, asking(stranger));
    require(GT_find_item(real_, &stranger, &found) == 0, "found an item that is not in the tree");
    require(!found, "stored a position of an item that is not in the tree");
}

void modelled_tree::search(int32_t key)
{
    record sought{key, 0};
    tree_item *found = nullptr;
    const reference_tree::node *expected = shape_.search(asking(sought));
    require(GT_search_item(real_, &sought, &found) == (expected ? 1 : 0), "search returned another result");
    require(found == (expected ? expected->position : nullptr), "search stored another position");
}

void modelled_tree::count()
{
    require(GT_count_items(real_) == static_cast<int32_t>(size()), "another number of items");
}

/* ---- removal ---- */

modelled_tree::removal modelled_tree::removal_of(tree_item *position) const
{
    const bool two_children = position->left && position->right;
    return {position, neighbour(position, 1), two_children ? neighbour(position, -1) : nullptr};
}

void modelled_tree::expect_removal(const removal &removed)
{
    expected_.dealloc(removed.position, sizeof(tree_item));
}

/* What a removal does to the iterators, deliberate trap included. */
void modelled_tree::forget(const removal &removed)
{
    for (auto &[real, model] : iterators_) {
        if (model.current == removed.position)
            model.current = nullptr;
        if (removed.replaced_by && model.current == removed.replaced_by)
            model.current = removed.position;
        if (model.cursor == removed.position)
            model.cursor = removed.next;
        if (removed.replaced_by && model.cursor == removed.replaced_by)
            model.cursor = removed.position;
    }
}

void modelled_tree::erase_from_order(record *item)
{
    for (auto at = order_.begin(); at != order_.end(); ++at) {
        if (*at == item) {
            order_.erase(at);
            return;
        }
    }
}

void modelled_tree::remove(std::size_t index)
{
    const removal removed = removal_of(position_at(index));
    auto *item = static_cast<record *>(removed.position->item);
    require(shape_.remove(removed.position, asking(*item)), "the model lost a node");
    expect_removal(removed);
    erase_from_order(item);
    expect_raise(0, [&] { GT_remove_item(real_, removed.position); });
    forget(removed);
    free_record(item);
}

void modelled_tree::remove_global(std::size_t index)
{
    remove_with_key(index, static_cast<record *>(position_at(index)->item)->key, false);
}

void modelled_tree::remove_with_key(std::size_t index, int32_t key, bool try_by_comparison)
{
    const removal removed = removal_of(position_at(index));
    auto *item = static_cast<record *>(removed.position->item);
    erase_from_order(item);
    item->key = key;
    bool reached = false;
    if (try_by_comparison) {
        reached = shape_.remove(removed.position, asking(*item));
        if (reached)
            expect_removal(removed);
        expect_raise(reached ? 0 : 481, [&] { GT_remove_item(real_, removed.position); });
    }
    if (!reached) {
        if (!shape_.remove(removed.position, asking(*item)))
            shape_.remove(removed.position, [](void *) { return 0; });
        expect_removal(removed);
        expect_raise(0, [&] { GT_remove_item_global(real_, removed.position); });
    }
    forget(removed);
    free_record(item);
}

void modelled_tree::find_and_remove(std::size_t index)
{
    const removal removed = removal_of(position_at(index));
    auto *item = static_cast<record *>(removed.position->item);
    shape_.find(item, asking(*item));
    shape_.remove(removed.position, asking(*item));
    expect_removal(removed);
    erase_from_order(item);
    expect_raise(0, [&] { GT_find_and_remove_item(real_, item); });
    forget(removed);
    free_record(item);
}

void modelled_tree::remove_first()
{
    if (order_.empty())
        return expect_raise(1427, [&] { GT_remove_first_item(real_); });
    const removal removed = removal_of(position_at(0));
    auto *item = static_cast<record *>(removed.position->item);
    shape_.remove(removed.position, [](void *) { return -1; });
    expect_removal(removed);
    erase_from_order(item);
    expect_raise(0, [&] { GT_remove_first_item(real_); });
    forget(removed);
    free_record(item);
}

void modelled_tree::remove_stranger(int32_t key, bool global)
{
    record item{key, 0};
    tree_item stranger{&item, nullptr, nullptr, nullptr, nullptr, 0};
    shape_.remove(&stranger, asking(item));
    if (global)
        expect_raise(545, [&] { GT_remove_item_global(real_, &stranger); });
    else
        expect_raise(481, [&] { GT_remove_item(real_, &stranger); });
}

void modelled_tree::find_and_remove_stranger(int32_t key)
{
    record stranger{key, 0};
    shape_.find(&stranger, asking(stranger));
    expect_raise(566, [&] { GT_find_and_remove_item(real_, &stranger); });
}

/* ---- maintenance ---- */

/* One pass of the sort over the items up to `bound`. Returns the index that it exchanged last at, or 0. */
int modelled_tree::pass(std::vector<record *> &items, std::size_t bound)
{
    int last_swap = 0;
    const int iterator = expected_.alloc(sizeof(tree_iter)), registered = expected_.alloc(sizeof(GL_node));
    for (std::size_t i = 1; i < bound; ++i) {
        if (asking(*items[i])(items[i - 1]) >= 0)
            continue;
        std::swap(items[i], items[i - 1]);
        last_swap = static_cast<int>(i);
    }
    expected_.dealloc(registered, sizeof(GL_node));
    expected_.dealloc(iterator, sizeof(tree_iter));
    return last_swap;
}

void modelled_tree::sort_with_keys(const std::vector<std::pair<std::size_t, int32_t>> &changed)
{
    std::vector<record *> items(order_.begin(), order_.end()), sorted;
    for (const auto &[index, key] : changed)
        items[index]->key = key;
    sorted = items;
    sort_stably(sorted.begin(), sorted.end(), by_key());
    order_ = std::multiset<record *, by_key>(sorted.begin(), sorted.end());
    for (int bound = static_cast<int>(items.size()); items.size() >= 2 && bound > 0;)
        bound = pass(items, static_cast<std::size_t>(bound));
    require(items == sorted, "the model's passes do not sort");
    const std::vector<reference_tree::node *> nodes = shape_.in_order();
    for (std::size_t i = 0; i < nodes.size(); ++i)
        nodes[i]->item = sorted[i];
    GT_sort(real_);
}

void modelled_tree::expect_nodes_freed(bool total)
{
    for (const reference_tree::node *node : shape_.post_order()) {
        if (total)
            expected_.dealloc(node->item, sizeof(record));
        expected_.dealloc(node->position, sizeof(tree_item));
    }
}

void modelled_tree::make_empty(bool total)
{
    expect_nodes_freed(total);
    total ? GT_total_make_empty(real_, sizeof(record)) : GT_make_empty(real_);
    for (iterator_pair &pair : iterators_)
        pair.model.cursor = pair.model.current = nullptr;
    for (record *item : order_) {
        if (!total)
            free_record(item);
    }
    order_.clear();
    shape_.root.reset();
}

int32_t modelled_tree::release(bool total)
{
    for (const GL_node *registered = real_->iterators->first; registered; registered = registered->next)
        expected_.dealloc(registered, sizeof *registered);
    expected_.dealloc(real_->iterators, sizeof(GL_list));
    expect_nodes_freed(total);
    expected_.dealloc(real_, sizeof *real_);
    total ? GT_total_release(&real_, sizeof(record)) : GT_release(&real_);
    require(!real_, "release left the variable");
    for (auto &[iterator, model] : iterators_) {
        require(!iterator->cursor && !iterator->current && !iterator->tree, "release left an iterator's pointers");
        require(iterator->mode == model.mode && iterator->condition == model.condition, "release changed an iterator");
        expected_.dealloc(iterator, sizeof *iterator);
        MM_dealloc_item(iterator, sizeof *iterator);
    }
    const auto left_behind = static_cast<int32_t>(iterators_.size());
    iterators_.clear();
    for (record *item : order_) {
        if (!total)
            free_record(item);
    }
    order_.clear();
    shape_.root.reset();
    return left_behind;
}

void modelled_tree::expect_printed(const reference_tree::link &n, int depth)
{
    if (!n)
        return;
    expect_printed(n->left, depth + 1);
    for (int i = 0; i < depth; ++i)
        expected_.call("dprintf    ");
    expected_.call("print " + std::to_string(static_cast<record *>(n->item)->number));
    expected_.call("dprintf \n");
    expect_printed(n->right, depth + 1);
}

void modelled_tree::print()
{
    expect_printed(shape_.root, 0);
    GT_print_tree(real_, print_item);
}

/* ---- iterators ---- */

/* As an iterator over all items is: its condition has the bytes of a fresh block. */
tree_iter modelled_tree::fresh_model(tree_item *cursor, int32_t mode) const
{
    tree_iter model{cursor, nullptr, real_, nullptr, mode};
    std::memset(&model.condition, 0xCD, sizeof model.condition);
    return model;
}

modelled_tree::iterator_pair &modelled_tree::add(tree_iter *real, tree_item *cursor, GT_condition condition,
                                                 int32_t mode)
{
    iterators_.push_back({real, fresh_model(cursor, mode)});
    if (condition)
        iterators_.back().model.condition = condition;
    return iterators_.back();
}

void modelled_tree::start(predicate condition, int32_t mode)
{
    expected_.alloc(sizeof(tree_iter));
    expected_.alloc(sizeof(GL_node));
    tree_item *first = order_.empty() ? nullptr : position_at(0);
    const GT_condition function = mode ? function_of(condition) : nullptr;
    add(mode == 0   ? GT_all_items(real_)
        : mode == 1 ? GT_all_items_conditional(real_, function)
                    : GT_all_items_while_conditioned(real_, function),
        first, function, mode);
}

void modelled_tree::start_from(std::size_t iterator, bool current, predicate condition, int32_t mode)
{
    expected_.alloc(sizeof(tree_iter));
    expected_.alloc(sizeof(GL_node));
    const iterator_pair given = iterators_.at(iterator);
    const GT_condition function = mode ? function_of(condition) : given.model.condition;
    tree_iter *made;
    if (mode == 0)
        made = current ? GT_from_current(given.real) : GT_from_next(given.real);
    else if (mode == 1)
        made = current ? GT_from_current_conditional(given.real, function)
                       : GT_from_next_conditional(given.real, function);
    else
        made = current ? GT_from_current_while_conditioned(given.real, function)
                       : GT_from_next_while_conditioned(given.real, function);
    add(made, current ? given.model.current : given.model.cursor, function, mode);
}

bool modelled_tree::may_step(std::size_t iterator) const
{
    return is_here(iterators_.at(iterator).model.cursor);
}

bool modelled_tree::may_copy(std::size_t iterator) const
{
    return may_step(iterator) && is_here(iterators_.at(iterator).model.current);
}

std::ptrdiff_t modelled_tree::index_of_current(std::size_t iterator) const
{
    const std::vector<reference_tree::node *> nodes = shape_.in_order();
    const auto at = std::find_if(nodes.begin(), nodes.end(), [&](const reference_tree::node *candidate) {
        return candidate->position == iterators_.at(iterator).model.current;
    });
    return at == nodes.end() ? -1 : at - nodes.begin();
}

/* Returns the node that is delivered, or null. */
const tree_item *modelled_tree::step_model(tree_iter &model)
{
    while (tree_item *node = model.cursor) {
        model.cursor = neighbour(node, 1);
        const record &item = *static_cast<record *>(node->item);
        if (model.mode != 0)
            expected_.call("ask " + std::to_string(item.number));
        if (model.mode == 0 || accepts(model.condition, item)) {
            model.current = node;
            return node;
        }
        if (model.mode == 2)
            break;
    }
    return nullptr;
}

void modelled_tree::expect_end(std::size_t iterator)
{
    const GL_node *registered = real_->iterators->first;
    for (std::size_t i = 0; i < iterator; ++i)
        registered = registered->next;
    expected_.dealloc(registered, sizeof *registered);
    expected_.dealloc(iterators_[iterator].real, sizeof(tree_iter));
}

void modelled_tree::step(std::size_t iterator, bool position)
{
    tree_iter *real = iterators_.at(iterator).real;
    const tree_item *node = step_model(iterators_[iterator].model);
    if (!node) {
        expect_end(iterator);
        iterators_.erase(iterators_.begin() + static_cast<std::ptrdiff_t>(iterator));
    }
    const int more = node ? 1 : 0;
    static tree_item untouched;
    tree_item *stored = &untouched;
    void *item = this;
    if (position) {
        require(GT_next_position(real, &stored) == more, "next_position returned another result");
        require(stored == (node ? node : &untouched), "next_position stored another position");
    } else {
        require(GT_next_item(real, &item) == more, "next_item returned another result");
        require(item == (node ? node->item : this), "next_item stored another item");
    }
    if (node) {
        require(GT_current_item(real, &item) == 1, "there is no current item");
        require(item == node->item, "another current item");
    }
}

void modelled_tree::end(std::size_t iterator)
{
    expect_end(iterator);
    tree_iter *real = iterators_[iterator].real;
    iterators_.erase(iterators_.begin() + static_cast<std::ptrdiff_t>(iterator));
    GT_end_iterator(real);
}

/* ---- description ---- */

void modelled_tree::describe(state_text &state, const reference_tree::link &n)
{
    state.add(n != nullptr);
    if (!n)
        return;
    describe(state, n->left);
    describe(state, n->right);
}

/* -1 of null, -2 of a record that was released. */
int64_t modelled_tree::index_of(const tree_item *position) const
{
    const std::vector<reference_tree::node *> nodes = shape_.in_order();
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (nodes[i]->position == position)
            return static_cast<int64_t>(i);
    }
    return position ? -2 : -1;
}

void modelled_tree::describe(state_text &state) const
{
    state.add(dupl_allowed_);
    describe(state, shape_.root);
    for (std::size_t i = 0; i < size(); ++i)
        state.add(key_at(i) % 2 != 0, i > 0 && key_at(i) == key_at(i - 1));
    for (const auto &[iterator, model] : iterators_)
        state.add(model.mode, index_of(model.cursor), index_of(model.current), model.tree != nullptr);
}

/* ---- comparison ---- */

void modelled_tree::compare_shape(const reference_tree::link &expected, const tree_item *node) const
{
    require(node == (expected ? expected->position : nullptr), "another shape");
    if (!expected)
        return;
    require(node->item == expected->item, "another item");
    require(node->balance == reference_tree::balance(expected), "another balance");
    compare_shape(expected->left, node->left);
    compare_shape(expected->right, node->right);
}

void modelled_tree::compare_iterators() const
{
    require(real_->iterators->count == static_cast<int32_t>(iterators_.size()), "another number of iterators");
    const GL_node *registered = real_->iterators->first;
    for (const auto &[iterator, model] : iterators_) {
        require(registered->item == iterator, "another iterator is registered");
        require(iterator->cursor == model.cursor, "iterator: another cursor");
        require(iterator->current == model.current, "iterator: another current");
        require(iterator->tree == model.tree, "iterator: another tree");
        require(iterator->condition == model.condition, "iterator: another condition");
        require(iterator->mode == model.mode, "iterator: another mode");
        registered = registered->next;
    }
}

void modelled_tree::compare() const
{
    if (!real_)
        return;
    const int broken = broken_invariant(*real_, compare_silently);
    require(broken == 0, "invariant " + std::to_string(broken) + " is broken");
    require(real_->compare == compare_recorded, "another comparison");
    require(real_->dupl_allowed == (dupl_allowed_ ? 1 : 0), "another rule");
    compare_shape(shape_.root, real_->root);
    const tree_item *node = real_->first;
    for (const record *item : order_) {
        require(node && node->item == item, "another order");
        node = node->next;
    }
    require(!node, "more items");
    compare_iterators();
    expected_.compare();
}

} // namespace mova::test
