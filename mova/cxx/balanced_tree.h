/* SPDX-License-Identifier: MIT */
/* Balanced tree, typed: mova/tree/balanced_tree.h for items of type T, with the comparison compiled in.

       struct by_area {
           auto operator()(const country &a, const country &b) const { return a.area <=> b.area; }
       };
       mova::balanced_set<country, by_area> countries;         refuses equal items; they are the caller's
       mova::balanced_multiset<country, by_area> all;          admits them, in the order of their insertion
       mova::balanced_set<country, by_area, std::default_delete<country>> own;            deletes them

   A comparison has no state and returns an ordering, a number, or whether one goes before the other, as std::less. It takes
   what is placed or looked for first, then an item; where it takes other types first, those may be looked for. What is
   unordered counts as equal. An ordering is the quickest of the three.

   The tree is a bidirectional range of its items, in order; it is not sized, for counting walks over all nodes. Positions are
   iterators, and as large as a pointer: mova/cxx/chain.h. Reading needs no cursor. A cursor is the C iterator: it follows
   every edit, and ends itself when it is over or goes out of scope.

       for (auto at : countries.positions())
           if (at->area == 0)
               countries.remove(at);

       edit, in the body of a loop        over the tree, or a range of it       over positions(): the C header's table
       inserting N                        delivered if it lies ahead            delivered if it lies ahead
       removing what was delivered        not allowed                           goes on with its successor
       removing another                   allowed; its positions die            followed, but for a predecessor's trap
       sort()                             positions stay, at other items        the same
       clear()                            positions die                         the cursor is exhausted
       the end of the tree                positions die                         the cursor is dead

   Errors: lines 481, 545, 566 and 579, of removals, and 1181 and 1236, of an insertion into a tree whose balances a program
   has written over, as mova::error. The tree is as it was then, but after the last two: GT_insert_item. It is as it was after an
   exception out of a comparison or the memory service. Ownership, costs, threads: the C header. Of a tree without a name no range
   is made: mova/cxx/chain.h. */
#ifndef MOVA_CXX_BALANCED_TREE_H
#define MOVA_CXX_BALANCED_TREE_H

#include <algorithm>
#include <compare>
#include <vector>

#include <mova/cxx/chain.h>
#include <mova/cxx/tree_steps.h>

namespace mova {

/* Whether a comparison takes `a` and `b`; one that says yes or no is asked the other way round too. */
template <class Compare, class A, class B>
concept orders = std::invocable<const Compare, const A &, const B &> &&
    (!std::same_as<std::invoke_result_t<const Compare, const A &, const B &>, bool> ||
     std::invocable<const Compare, const B &, const A &>);

/* How a comparison without state orders `a` before `b`: a number below, equal to or above 0, or an ordering. */
template <class Compare, class A, class B>
auto order_of(const A &a, const B &b)
{
    if constexpr (!orders<Compare, A, B>) {
        static_assert(
            never<Compare, A, B>,
            "mova::balanced_set: the comparison does not take what is placed or looked for, then an item, as "
            "constants (and, where it says yes or no, the other way round): give the tree a class with such an "
            "operator() const, as in balanced_set<country, by_name>");
        return 0;
    } else if constexpr (std::same_as<decltype(Compare()(a, b)), bool>) {
        return Compare()(a, b) ? -1 : Compare()(b, a) ? 1 : 0;
    } else {
        return Compare()(a, b);
    }
}

template <class T>
struct tree_links {
    using head = GT_tree;
    using node = GT_tree_item;
    using value_type = std::remove_const_t<T>;
    using reference = T &;
    using constant = tree_links<const T>;

    static node *first(const head &t) noexcept { return t.first; }
    static node *last(const head &t) noexcept { return t.last; }
    /* Sends for the nodes that the walk will meet for the first time, as GT_next_item does. */
    static node *next(const node *at) noexcept
    {
        node *const next = at->next;
        if (next && next->right)
            tree_steps::prefetch_children(next->right);
        return next;
    }
    static node *prev(const node *at) noexcept { return at->prev; }
    static T &item(const node *at) noexcept { return *static_cast<T *>(at->item); }
};

template <class T, class Delete>
struct release_tree {
    /* Whether the C functions can free the items. */
    static constexpr bool by_size = std::same_as<Delete, host_delete> && std::is_trivially_destructible_v<T>;

    static void delete_items(const GT_tree &t) noexcept
    {
        if constexpr (owns_items<Delete> && !by_size) {
            for (const GT_tree_item *at = t.first; at; at = at->next)
                delete_by<Delete>(static_cast<T *>(at->item));
        }
    }
    void operator()(GT_tree *t) const noexcept
    {
        delete_items(*t);
        if constexpr (by_size)
            GT_total_release(&t, sizeof(T));
        else
            GT_release(&t);
    }
};

/* An iterator of the tree's, which ends with the object. */
template <class T>
class tree_cursor {
public:
    using position = chain_iterator<tree_links<T>>;

    explicit tree_cursor(GT_tree_iter *adopted) noexcept : iterator_(adopted) {}

    /* The next position, or one past the end; then the iterator is over, and every further step is the same. */
    position next() { return position(step()); }

    /* The position that was delivered last, or one past the end where it was removed, or none was delivered. */
    position current() const noexcept { return position(iterator_ ? iterator_->current : nullptr); }

    /* Another cursor, from the item that was delivered last. Requires one that is not over. */
    tree_cursor from_current() const { return tree_cursor(GT_from_current(iterator_.get())); }
    /* Another cursor, from where this one would look next. Requires one that is not over. */
    tree_cursor from_next() const { return tree_cursor(GT_from_next(iterator_.get())); }

    /* Whether it is not over. */
    explicit operator bool() const noexcept { return iterator_ != nullptr; }
    GT_tree_iter *get() noexcept { return iterator_.get(); }
    [[nodiscard]] GT_tree_iter *release() noexcept { return iterator_.release(); }

    /* A loop takes the first step where it begins: it goes on with a cursor that has been stepped. */
    class iterator {
    public:
        using value_type = position;
        using difference_type = std::ptrdiff_t;
        using iterator_concept = std::input_iterator_tag;

        iterator() = default;
        explicit iterator(tree_cursor *cursor) : cursor_(cursor), at_(cursor->step()) {}
        position operator*() const noexcept { return position(at_); }
        iterator &operator++()
        {
            at_ = cursor_->step();
            return *this;
        }
        void operator++(int) { ++*this; }
        friend bool operator==(const iterator &at, std::default_sentinel_t) noexcept { return !at.at_; }

    private:
        tree_cursor *cursor_ = nullptr;
        GT_tree_item *at_ = nullptr;
    };
    iterator begin() { return iterator(this); }
    std::default_sentinel_t end() const noexcept { return {}; }

private:
    GT_tree_item *step()
    {
        GT_tree_item *at;
        if (!iterator_)
            return nullptr;
        if (GT_next_position(iterator_.get(), &at))
            return at;
        static_cast<void>(iterator_.release());
        return nullptr;
    }

    struct end_it {
        /* The record of an iterator that outlived its tree is nobody's. The library goes on counting it. */
        void operator()(GT_tree_iter *ended) const noexcept
        {
            if (ended->tree)
                GT_end_iterator(ended);
            else
                MM_dealloc_item(ended, sizeof *ended);
        }
    };
    std::unique_ptr<GT_tree_iter, end_it> iterator_;
};

/* What balanced_set and balanced_multiset are: a tree, which owns its head and nodes, and the items where Delete says so. */
template <class T, class Compare, bool AdmitsEqual, class Delete>
class basic_tree : public open_chain<tree_links<T>, release_tree<T, Delete>> {
    using base = open_chain<tree_links<T>, release_tree<T, Delete>>;
    static_assert(
        stateless<Compare>,
        "mova::balanced_set: a comparison must have no state, for the tree keeps it as a plain function: take a "
        "class whose operator() reads what it needs from the items, or from static variables");
    static_assert(sizeof(deleter_guard<Delete>) != 0);

public:
    using base::base, base::get;
    using typename base::iterator, typename base::const_iterator, typename base::position;

    /* What goes in and comes out: an item, or a pointer that owns it, where the tree does. */
    using item = std::conditional_t<owns_items<Delete>, std::unique_ptr<T, Delete>, T &>;

    basic_tree() : base(AdmitsEqual ? GT_create_with_dupl_allowed(compare) : GT_create_with_dupl_not_allowed(compare))
    {
    }
    /* Of a range of items, which stay where they are. */
    template <class Range>
    requires(!owns_items<Delete> && !std::same_as<std::remove_cvref_t<Range>, basic_tree> &&
             std::ranges::range<Range> &&
             std::convertible_to<std::ranges::range_reference_t<Range>, T &>) explicit basic_tree(Range &&items)
        : basic_tree()
    {
        for (T &each : items)
            insert(each);
    }

    /* The comparison as the tree keeps it. */
    static std::int32_t compare(void *a, void *b)
    {
        const auto order = order_of<Compare>(*static_cast<const T *>(a), *static_cast<const T *>(b));
        return order < 0 ? -1 : order > 0 ? 1 : 0;
    }

    /* A cursor from the first item on: see above. It takes memory from the host. */
    auto positions() & { return tree_cursor<T>(GT_all_items(get())); }
    template <class... None>
    auto positions(None...) &&
    {
        return named(*this).positions();
    }

    /* ---- insertion ---- */

    /* Where the item is now, or that of the equal item in its way, and whether it was inserted. An item that is owned is
       taken only where it is inserted. */
    std::pair<position, bool> insert(T &added) requires(!owns_items<Delete>) { return put(std::addressof(added)); }
    std::pair<position, bool> insert(std::unique_ptr<T, Delete> &&added) requires owns_items<Delete>
    {
        const auto result = put(added.get());
        if (result.second)
            static_cast<void>(added.release());
        return result;
    }

    /* ---- search: a position, or end() ---- */

    /* The equal item nearest to the root: GT_search_item. */
    template <class Key>
    iterator search(const Key &key)
    {
        return iterator(found(key));
    }
    template <class Key>
    const_iterator search(const Key &key) const
    {
        return const_iterator(found(key));
    }
    template <class Key>
    bool contains(const Key &key) const
    {
        return found(key) != nullptr;
    }

    /* This very item: GT_find_item. */
    position find_item(const T &sought)
    {
        const auto is_sought = [&sought](const GT_tree_item *at) { return at->item == std::addressof(sought); };
        return position(tree_steps::find(this->head_->root, is_sought, order_for(sought)));
    }

    /* The first item that does not go before the key, or end(). O(log n). */
    template <class Key>
    iterator lower_bound(const Key &key)
    {
        return bound(tree_steps::first_not(*get(), [&](const auto *at) { return order_for(key)(at->item) > 0; }));
    }
    /* The first item that goes after the key, or end(). O(log n). */
    template <class Key>
    iterator upper_bound(const Key &key)
    {
        return bound(tree_steps::first_not(*get(), [&](const auto *at) { return !(order_for(key)(at->item) < 0); }));
    }
    /* The same, in a constant tree. */
    template <class Key>
    const_iterator lower_bound(const Key &key) const
    {
        return const_cast<basic_tree *>(this)->lower_bound(key);
    }
    /* The same, in a constant tree. */
    template <class Key>
    const_iterator upper_bound(const Key &key) const
    {
        return const_cast<basic_tree *>(this)->upper_bound(key);
    }
    /* The items that are equal to the key. O(log n). */
    template <class Key>
    iterator_range<iterator> equal_range(const Key &key) &
    {
        return {lower_bound(key), upper_bound(key)};
    }
    template <class Key>
    iterator_range<const_iterator> equal_range(const Key &key) const &
    {
        return {lower_bound(key), upper_bound(key)};
    }
    /* Refused, with the compiler's words for what to write in its place. */
    template <class Key>
    auto equal_range(const Key &key) &&
    {
        return named(*this).equal_range(key);
    }

    /* Linear. */
    std::size_t count_items() const noexcept { return static_cast<std::size_t>(GT_count_items(get())); }

    /* ---- removal ---- */

    /* Removes the node, and deletes an item that is owned. Raises line 481 when the comparisons do not lead to it. */
    void remove(position at) { static_cast<void>(take(at)); }

    /* Removes the node and hands its item out. */
    item take(position at)
    {
        T &taken = *at;
        return handed_out(taken, removed(at, taken), 481);
    }

    /* As take, of a node whose key was changed, by looking everywhere: GT_remove_item_global. Linear. Raises line 545. */
    item take_anywhere(position at)
    {
        T &taken = *at;
        const auto anywhere = [](const void *) { return 0; };
        return handed_out(taken, removed(at, taken) || tree_steps::remove(*get(), at.get(), anywhere), 545);
    }

    /* Finds this very item and takes it out: GT_find_and_remove_item. Raises line 566 or 579. */
    item take_item(T &sought)
    {
        const position at = find_item(sought);
        return at.get() ? handed_out(sought, removed(at, sought), 579) : handed_out(sought, false, 566);
    }

    /* Removes the equal item nearest to the root. Returns whether there was one. */
    template <class Key>
    bool remove_equal(const Key &key)
    {
        const position at(found(key));
        if (at.get())
            remove(at);
        return at.get() != nullptr;
    }

    /* Takes the first item out, without comparing. Requires one. */
    item take_first()
    {
        T &taken = this->front();
        GT_remove_first_item(get());
        return handed_out(taken, true, 0);
    }

    /* Removes every item that `accepts` accepts and returns their number. After an exception those up to the item that it
       was thrown for are done with. */
    template <class Accepts>
    std::size_t remove_if(Accepts accepts)
    {
        std::size_t removed = 0;
        for (auto at : positions()) {
            if (accepts(std::as_const(*at))) {
                remove(at);
                ++removed;
            }
        }
        return removed;
    }

    /* Removes all nodes, and deletes items that are owned. Linear. Cursors are exhausted. */
    void clear() noexcept
    {
        release_tree<T, Delete>::delete_items(*get());
        if constexpr (release_tree<T, Delete>::by_size)
            GT_total_make_empty(get(), sizeof(T));
        else
            GT_make_empty(get());
    }

    /* ---- maintenance ---- */

    /* Puts the items in order again after their keys were changed: the nodes and all else stay, equal items keep their order,
       as by GT_sort. O(n log n), with room for 2n pointers from the standard library; O(n), without, where they are in order
       already. After an exception nothing has changed. */
    void sort()
    {
        const auto goes_before = [](const T &a, const T &b) { return order_of<Compare>(a, b) < 0; };
        if (std::is_sorted(this->begin(), this->end(), goes_before))
            return;
        std::vector<void *> items;
        for (const GT_tree_item *at = this->first(); at; at = at->next)
            items.push_back(at->item);
        merge_sort(items);
        auto next = items.begin();
        for (GT_tree_item *at = this->first(); at; at = at->next)
            at->item = *next++;
    }

    /* GT_print_tree, with a printer without state. */
    template <class Print>
    void print(Print) const
    {
        static_assert(
            stateless<Print>,
            "mova::balanced_set: a printer must have no state, for GT_print_tree takes a plain function: let it read "
            "what it needs from the items, or from static variables");
        if constexpr (stateless<Print>)
            GT_print_tree(this->head_.get(), [](void *printed) { Print()(*static_cast<const T *>(printed)); });
    }

    /* Whether the items, in order, are equal by their own ==. */
    friend bool operator==(const basic_tree &a, const basic_tree &b) { return equal_items(a, b); }

private:
    template <class Key>
    static auto order_for(const Key &key) noexcept
    {
        return [&key](const void *item) { return order_of<Compare>(key, *static_cast<const T *>(item)); };
    }
    template <class Key>
    GT_tree_item *found(const Key &key) const
    {
        return tree_steps::search(*get(), order_for(key));
    }
    /* Merges runs in order, each time twice as long. (std::stable_sort asks for its room in a way that compilers warn of.) */
    static void merge_sort(std::vector<void *> &items)
    {
        std::vector<void *> merged(items.size());
        const auto last = items.end() - items.begin();
        for (std::ptrdiff_t run = 1; run < last; run *= 2) {
            for (std::ptrdiff_t from = 0; from < last; from += 2 * run) {
                const auto begin = items.begin();
                const auto middle = std::min(from + run, last), to = std::min(middle + run, last);
                std::merge(begin + from, begin + middle, begin + middle, begin + to, merged.begin() + from,
                           [](void *a, void *b) { return compare(a, b) < 0; });
            }
            items.swap(merged);
        }
    }
    /* A node, or the end, from which it can be stepped back. */
    iterator bound(GT_tree_item *at) noexcept { return at ? iterator(at) : this->end(); }

    std::pair<position, bool> put(T *added)
    {
        const auto [at, done] =
            tree_steps::insert(*get(), const_cast<std::remove_const_t<T> *>(added), order_for(std::as_const(*added)));
        return {position(at), done};
    }
    bool removed(position at, const T &taken) { return tree_steps::remove(*get(), at.get(), order_for(taken)); }
    /* Where the host returns from the raise, the tree still owns the item. */
    static item handed_out(T &taken, bool is_out, std::int32_t line)
    {
        if (!is_out)
            EX_raise_exception_line("gentree", line, MOVA_PRECONDITION_BROKEN);
        if constexpr (owns_items<Delete>)
            return item(is_out ? std::addressof(taken) : nullptr);
        else
            return taken;
    }
};

/* A tree that refuses an item that is equal to one in it. */
template <class T, class Compare = std::compare_three_way, class Delete = borrowed>
using balanced_set = basic_tree<T, Compare, false, Delete>;
/* A tree that admits equal items, in the order of their insertion. */
template <class T, class Compare = std::compare_three_way, class Delete = borrowed>
using balanced_multiset = basic_tree<T, Compare, true, Delete>;

} // namespace mova

#endif
