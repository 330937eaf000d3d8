/* SPDX-License-Identifier: MIT */
/* The ranges that the nodes of a list are: open chains and rings.

   A position is an iterator, and as large as a pointer: the address of a node, and one bit.

       open chain     null <- A <-> B <-> C -> null       positions  A  B  C  and C+: past the end
       ring           +-> A <-> B <-> C <-+               positions  A  B  C
                      +-------------------+               once around  A  B  C  A+

   Past the end of an open chain is the last node with the bit set, so that stepping back from there works. All positions
   past the end are equal: a loop that has taken end() before its first step may append.

   A node of a ring does not know whether it is the first. So a position in a ring is a circulator, which walks around for
   ever in both directions. The iterator of a walk once around also knows the node where that began, with the bit, which is set
   where the walk has come back to there: so it is as large as two positions. It converts to the one where it stands.

       range                       concept                    delivers
       list                        bidirectional, sized       items
       list.reversed()             bidirectional              items, last to first
       list.between(from, to)      bidirectional              items, both ends included
       ring, ring.reversed()       bidirectional; ring sized  items, once around
       ring.between(from, to)      bidirectional              items; may cross the seam
       ring.around(at)             bidirectional, endless     items, from `at` on
       .positions()                input                      positions; see below
       .positions_reversed()       input                      positions, last to first
       .positions_if(accepts)      input                      positions of the items that a predicate accepts

   What between() returns has a reversed() itself; both walks over positions may be given two ends.

   Editing while walking. A walk over positions() is the C iterator: it fetches the successor before it delivers.

       for (auto at : list.positions())
           if (is_even(*at))
               list.remove(at);

       edit, in the body of a loop        over items                    over positions()
       removing what was delivered        not allowed                   goes on with the successor
       removing the successor             allowed                       not allowed
       removing anything else             allowed                       allowed, but for the walk's end
       in a ring, removing the node       not allowed: the walk would   allowed
         where the walk began             not end
       inserting                          delivered where it lies ahead delivered beyond the successor, up to the end
       reversing, rolling                 walks the links as they are   walks the links as they are
       clearing, joining, moving the      as in C: positions live as    as in C
         owner                            long as their nodes do

   Ownership: a range owns nothing. A null owner is an empty range. Of an owner that has no name none is made: in
   "for (int n : made().reversed())" the list would be gone before the first step. Only the loop over the owner itself, over
   "made()", keeps it. */
#ifndef MOVA_CXX_CHAIN_H
#define MOVA_CXX_CHAIN_H

#include <compare>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>

#include <mova/cxx/owner.h>

namespace mova {

/* A class of links says what a chain's nodes are:

       head, node                     the C records
       value_type, reference          what a position leads to
       constant                       the links of the same nodes, leading to constants
       first(head) last(head)         the ends
       next(node) prev(node)          the neighbours
       item(node)                     what the node holds

   and for positions() the C iterator `walk`, made by from_to(head, from, to, forward) and stepped by step(walk, &node). */

/* Links that say how the C iterator walks: positions() wants them. */
template <class Links>
concept has_walk = requires
{
    typename Links::walk;
};

/* The same chain from the other end. */
template <class Links>
struct reversed_links : Links {
    using constant = reversed_links<typename Links::constant>;
    static auto *next(const typename Links::node *at) noexcept { return Links::prev(at); }
    static auto *prev(const typename Links::node *at) noexcept { return Links::next(at); }
};

/* ---- positions ---- */

/* What all three kinds of position are: a node's address and a bit. */
template <class Links>
class marked_node {
public:
    using node = typename Links::node;
    using value_type = typename Links::value_type;
    using reference = typename Links::reference;
    using difference_type = std::ptrdiff_t;
    using iterator_concept = std::bidirectional_iterator_tag;
    /* Also where pointers are delivered by value: std::prev would step forward for ever otherwise. */
    using iterator_category = std::bidirectional_iterator_tag;

protected:
    static constexpr std::uintptr_t mark = 1;

    marked_node() = default;
    explicit marked_node(std::uintptr_t word) noexcept : word_(word) {}

    /* Node addresses are even, which spares loops a test of the bit. */
    static std::uintptr_t word_of(const node *at) noexcept
    {
        return reinterpret_cast<std::uintptr_t>(__builtin_assume_aligned(at, alignof(node)));
    }
    static node *node_of(std::uintptr_t word) noexcept { return reinterpret_cast<node *>(word); }
    bool marked() const noexcept { return (word_ & mark) != 0; }

    std::uintptr_t word_ = 0;
};

/* A position in an open chain. */
template <class Links>
class chain_iterator : public marked_node<Links> {
    using base = marked_node<Links>;
    using base::mark, base::word_;

public:
    using typename base::node, typename base::reference;

    /* Past the end of an empty chain. */
    chain_iterator() noexcept : base(mark) {}

    /* The position of a node; of null, as chain_iterator(). */
    explicit chain_iterator(node *at) noexcept : base(at ? base::word_of(at) : mark) {}

    /* Past the end of a chain whose last node this is. */
    static chain_iterator past(node *last) noexcept
    {
        chain_iterator end;
        end.word_ = base::word_of(last) | mark;
        return end;
    }

    /* A position that reads and writes serves where one that reads is wanted. */
    template <class Other>
    requires(std::same_as<typename Other::constant, Links> && !std::same_as<Other, Links>)
        chain_iterator(const chain_iterator<Other> &other)
    noexcept : base(other.word()) {}

    /* The node, for the C functions; null past the end. */
    node *get() const noexcept
    {
        if (base::marked()) [[unlikely]]
            return nullptr;
        return base::node_of(word_);
    }
    /* The address of the node, and the bit. */
    std::uintptr_t word() const noexcept { return word_; }

    /* Requires a node, of which the compiler is told: it would warn of items at addresses like 1. */
    reference operator*() const noexcept
    {
        if (base::marked())
            __builtin_unreachable();
        return Links::item(base::node_of(word_));
    }
    auto *operator->() const noexcept requires std::is_reference_v<reference> { return std::addressof(**this); }

    chain_iterator &operator++() noexcept
    {
        const node *next = Links::next(base::node_of(word_));
        /* A guess, so that the next load need not wait for the outcome. */
        if (__builtin_expect_with_probability(next != nullptr, 1, 0.999))
            word_ = base::word_of(next);
        else
            word_ |= mark;
        return *this;
    }
    chain_iterator operator++(int) noexcept
    {
        chain_iterator before = *this;
        ++*this;
        return before;
    }
    chain_iterator &operator--() noexcept
    {
        word_ = base::marked() ? word_ & ~mark : base::word_of(Links::prev(base::node_of(word_)));
        return *this;
    }
    chain_iterator operator--(int) noexcept
    {
        chain_iterator before = *this;
        --*this;
        return before;
    }

    friend bool operator==(chain_iterator a, chain_iterator b) noexcept
    {
        return a.marked() == b.marked() && (a.marked() || a.word_ == b.word_);
    }
};

/* A position in a ring. It walks around for ever. */
template <class Links>
class circulator : public marked_node<Links> {
    using base = marked_node<Links>;
    using base::word_;

public:
    using typename base::node, typename base::reference;

    circulator() = default;
    explicit circulator(node *at) noexcept : base(base::word_of(at)) {}

    template <class Other>
    requires(std::same_as<typename Other::constant, Links> && !std::same_as<Other, Links>)
        circulator(const circulator<Other> &other)
    noexcept : circulator(other.get()) {}

    /* The node, for the C functions; null where a search found nothing. */
    node *get() const noexcept { return base::node_of(word_); }

    reference operator*() const noexcept { return Links::item(get()); }
    auto *operator->() const noexcept requires std::is_reference_v<reference> { return std::addressof(**this); }

    circulator &operator++() noexcept { return *this = circulator(Links::next(get())); }
    circulator &operator--() noexcept { return *this = circulator(Links::prev(get())); }
    circulator operator++(int) noexcept { return std::exchange(*this, circulator(Links::next(get()))); }
    circulator operator--(int) noexcept { return std::exchange(*this, circulator(Links::prev(get()))); }

    friend bool operator==(circulator a, circulator b) noexcept { return a.word_ == b.word_; }
};

/* A step of a walk once around a ring. */
template <class Links>
class ring_iterator : public marked_node<Links> {
    using base = marked_node<Links>;
    using base::mark, base::word_;

public:
    using typename base::node, typename base::reference;

    ring_iterator() = default;
    /* `at`, in a walk that began at `origin`. */
    ring_iterator(node *at, node *origin) noexcept : base(base::word_of(origin)), at_(at) {}
    /* The end of a walk that began at `origin`, before `at`. */
    static ring_iterator end(node *at, node *origin) noexcept
    {
        ring_iterator end(at, origin);
        end.word_ |= static_cast<std::uintptr_t>(at && at == origin);
        return end;
    }

    template <class Other>
    requires(std::same_as<typename Other::constant, Links> && !std::same_as<Other, Links>)
        ring_iterator(const ring_iterator<Other> &other)
    noexcept : base(other.word()), at_(other.get()) {}

    node *get() const noexcept { return at_; }
    /* Where the walk began, marked where it has come back to there. */
    std::uintptr_t word() const noexcept { return word_; }

    /* The position that this step stands at. */
    template <class Target>
    requires(std::same_as<Target, Links> || std::same_as<Target, typename Links::constant>)
    operator circulator<Target>() const noexcept
    {
        return circulator<Target>(get());
    }

    reference operator*() const noexcept { return Links::item(get()); }
    auto *operator->() const noexcept requires std::is_reference_v<reference> { return std::addressof(**this); }

    ring_iterator &operator++() noexcept
    {
        at_ = Links::next(at_);
        word_ |= static_cast<std::uintptr_t>(base::word_of(at_) == word_);
        return *this;
    }
    ring_iterator &operator--() noexcept
    {
        at_ = Links::prev(at_);
        word_ &= ~mark;
        return *this;
    }
    ring_iterator operator++(int) noexcept
    {
        ring_iterator before = *this;
        ++*this;
        return before;
    }
    ring_iterator operator--(int) noexcept
    {
        ring_iterator before = *this;
        --*this;
        return before;
    }

    friend bool operator==(ring_iterator a, ring_iterator b) noexcept
    {
        return a.at_ == b.at_ && a.marked() == b.marked();
    }

private:
    node *at_ = nullptr;
};

/* ---- ranges ---- */

/* What lies between two iterators. */
template <class Iterator, class Sentinel = Iterator>
class iterator_range {
public:
    iterator_range() = default;
    iterator_range(Iterator begin, Sentinel end) noexcept : begin_(begin), end_(end) {}
    Iterator begin() const noexcept { return begin_; }
    Sentinel end() const noexcept { return end_; }
    bool empty() const noexcept { return begin_ == end_; }

    /* The same from the end. */
    auto reversed() const noexcept requires(std::same_as<Iterator, Sentinel> &&std::bidirectional_iterator<Iterator>)
    {
        using backwards = std::reverse_iterator<Iterator>;
        return iterator_range<backwards>(backwards(end_), backwards(begin_));
    }

private:
    Iterator begin_;
    [[no_unique_address]] Sentinel end_;
};

/* Accepts every item. */
struct any_item_will_do {
    bool operator()(const auto &) const noexcept { return true; }
};

/* A function that can be assigned, as what lies in a view must be. Closures that capture cannot: the new one is made in the
   place of the old. */
template <class Function>
class assignable {
public:
    assignable(Function function) noexcept : function_(std::move(function)) {}
    assignable(const assignable &) = default;
    assignable(assignable &&) = default;
    assignable &operator=(assignable other) noexcept
    {
        std::destroy_at(&function_);
        std::construct_at(&function_, std::move(other.function_));
        return *this;
    }

    template <class... Arguments>
    auto operator()(Arguments &&...arguments) noexcept(std::is_nothrow_invocable_v<Function &, Arguments...>)
    {
        return function_(std::forward<Arguments>(arguments)...);
    }
    template <class... Arguments>
    requires(std::invocable<const Function &, Arguments...>) auto operator()(Arguments &&...arguments) const
        noexcept(std::is_nothrow_invocable_v<const Function &, Arguments...>)
    {
        return function_(std::forward<Arguments>(arguments)...);
    }

private:
    Function function_;
};

/* A function of the caller's, as a view or a table keeps it. */
template <class Function>
using kept_function = std::conditional_t<!std::movable<Function> && std::is_nothrow_move_constructible_v<Function>,
                                         assignable<Function>, Function>;

/* The positions that a C iterator delivers, or those of them whose items are accepted: a walk during which what was delivered
   may be removed. Where `accepts` throws, the walk has passed the item. */
template <class Links, class Position, class Accepts = any_item_will_do>
class position_walk {
    static constexpr bool steps_quietly = std::is_nothrow_invocable_v<Accepts &, typename Links::reference>;

public:
    /* What a loop over a walk goes by. */
    class iterator {
    public:
        using value_type = Position;
        using difference_type = std::ptrdiff_t;
        using iterator_concept = std::input_iterator_tag;

        iterator() = default;
        explicit iterator(position_walk *walk) noexcept : walk_(walk) {}
        Position operator*() const noexcept { return Position(walk_->current_); }
        iterator &operator++() noexcept(steps_quietly)
        {
            walk_->step();
            return *this;
        }
        void operator++(int) noexcept(steps_quietly) { walk_->step(); }
        friend bool operator==(const iterator &at, std::default_sentinel_t) noexcept { return at.is_over(); }

    private:
        bool is_over() const noexcept { return !walk_->current_; }

        position_walk *walk_ = nullptr;
    };

    /* Goes on with a C iterator, which must have no test. */
    explicit position_walk(const typename Links::walk &walk, Accepts accepts = {}) noexcept
        : walk_(walk), accepts_(std::move(accepts))
    {
    }

    /* Takes the first step: a walk can be walked once. */
    iterator begin() noexcept(steps_quietly)
    {
        step();
        return iterator(this);
    }
    std::default_sentinel_t end() const noexcept { return {}; }

    /* The C iterator, as far as the walk has come. */
    const typename Links::walk &get() const noexcept { return walk_; }

private:
    void step() noexcept(steps_quietly)
    {
        while (Links::step(walk_, current_)) {
            if (accepts_(Links::item(current_)))
                return;
        }
        current_ = nullptr;
    }

    typename Links::walk walk_;
    [[no_unique_address]] kept_function<Accepts> accepts_;
    typename Links::node *current_ = nullptr;
};

/* ---- what every list can do ---- */

/* What open chains and rings share. */
template <class Links, class Release>
class chain_owner : public owner<typename Links::head, Release> {
    using constant = typename Links::constant;

public:
    using value_type = typename Links::value_type;
    using owner<typename Links::head, Release>::owner;

    bool empty() const noexcept { return !first(); }
    std::size_t size() const noexcept requires requires(typename Links::head &head) { head.count; }
    {
        return this->head_ ? static_cast<std::size_t>(this->head_->count) : 0;
    }

    /* Require an item. */
    decltype(auto) front() noexcept { return Links::item(Links::first(*this->head_)); }
    decltype(auto) front() const noexcept { return constant::item(Links::first(*this->head_)); }
    decltype(auto) back() noexcept { return Links::item(Links::last(*this->head_)); }
    decltype(auto) back() const noexcept { return constant::item(Links::last(*this->head_)); }

protected:
    typename Links::node *first() const noexcept { return this->head_ ? Links::first(*this->head_) : nullptr; }
    typename Links::node *last() const noexcept { return this->head_ ? Links::last(*this->head_) : nullptr; }

    template <class Position, class Accepts = any_item_will_do>
    auto walk(Position from, Position to, int forward, Accepts accepts = {}) noexcept
    {
        return position_walk<Links, Position, Accepts>(Links::from_to(this->get(), from.get(), to.get(), forward),
                                                       std::move(accepts));
    }
};

/* A list that is open: what pointer_list, element_list, intrusive_list and the trees have in common. It owns its head and its
   nodes. */
template <class Links, class Release>
class open_chain : public chain_owner<Links, Release> {
    using base = chain_owner<Links, Release>;
    using constant = typename Links::constant;

protected:
    using base::first, base::last;

public:
    using iterator = chain_iterator<Links>;
    using const_iterator = chain_iterator<constant>;
    using position = iterator;
    using const_position = const_iterator;
    using base::base;

    iterator begin() noexcept { return iterator(first()); }
    iterator end() noexcept { return iterator::past(last()); }
    const_iterator begin() const noexcept { return const_iterator(first()); }
    const_iterator end() const noexcept { return const_iterator::past(last()); }
    const_iterator cbegin() const noexcept { return begin(); }
    const_iterator cend() const noexcept { return end(); }

    auto reversed() &noexcept { return backwards<reversed_links<Links>>(); }
    auto reversed() const &noexcept { return backwards<reversed_links<constant>>(); }
    template <class... None>
    auto reversed(None...) &&
    {
        return named(*this).reversed();
    }

    /* The items from `from` to `to`, which must not lie before it; both included. */
    iterator_range<iterator> between(iterator from, iterator to) &noexcept { return {from, ++to}; }
    iterator_range<const_iterator> between(const_iterator from, const_iterator to) const &noexcept
    {
        return {from, ++to};
    }
    template <class... Ends>
    auto between(Ends... ends) &&
    {
        return named(*this).between(ends...);
    }

    /* Walks during which what was delivered may be removed. */
    auto positions() &noexcept requires has_walk<Links> { return this->walk(iterator(first()), iterator(last()), 1); }
    template <class Accepts>
    auto positions_if(Accepts accepts) &noexcept requires has_walk<Links>
    {
        return this->walk(iterator(first()), iterator(last()), 1, std::move(accepts));
    }
    auto positions_reversed() &noexcept requires has_walk<Links>
    {
        return this->walk(iterator(last()), iterator(first()), 0);
    }
    auto positions(iterator from, iterator to) &noexcept requires has_walk<Links> { return this->walk(from, to, 1); }
    auto positions_reversed(iterator from, iterator to) &noexcept requires has_walk<Links>
    {
        return this->walk(from, to, 0);
    }
    template <class... Ends>
    auto positions(Ends... ends) &&
    {
        return named(*this).positions(ends...);
    }
    template <class... Ends>
    auto positions_if(Ends... ends) &&
    {
        return named(*this).positions_if(ends...);
    }
    template <class... Ends>
    auto positions_reversed(Ends... ends) &&
    {
        return named(*this).positions_reversed(ends...);
    }

private:
    template <class Backwards>
    iterator_range<chain_iterator<Backwards>> backwards() const noexcept
    {
        return {chain_iterator<Backwards>(last()), chain_iterator<Backwards>::past(first())};
    }
};

/* A list that is a ring: what element_ring and intrusive_ring have in common. It owns its head and its nodes. */
template <class Links, class Release>
class ring_chain : public chain_owner<Links, Release> {
    using base = chain_owner<Links, Release>;
    using constant = typename Links::constant;
    using base::first, base::last;

public:
    using iterator = ring_iterator<Links>;
    using const_iterator = ring_iterator<constant>;
    using position = circulator<Links>;
    using const_position = circulator<constant>;
    using base::base;

    iterator begin() noexcept { return iterator(first(), first()); }
    iterator end() noexcept { return iterator::end(first(), first()); }
    const_iterator begin() const noexcept { return const_iterator(first(), first()); }
    const_iterator end() const noexcept { return const_iterator::end(first(), first()); }
    const_iterator cbegin() const noexcept { return begin(); }
    const_iterator cend() const noexcept { return end(); }

    auto reversed() &noexcept { return backwards<reversed_links<Links>>(); }
    auto reversed() const &noexcept { return backwards<reversed_links<constant>>(); }
    template <class... None>
    auto reversed(None...) &&
    {
        return named(*this).reversed();
    }

    /* The items from `from` along the ring to `to`, both included. */
    iterator_range<iterator> between(position from, position to) &noexcept
    {
        return {iterator(from.get(), from.get()), iterator::end((++to).get(), from.get())};
    }
    iterator_range<const_iterator> between(const_position from, const_position to) const &noexcept
    {
        return {const_iterator(from.get(), from.get()), const_iterator::end((++to).get(), from.get())};
    }
    template <class... Ends>
    auto between(Ends... ends) &&
    {
        return named(*this).between(ends...);
    }

    /* The endless range from `at` on, or from the first item of a ring that is not empty. */
    iterator_range<position, std::unreachable_sentinel_t> around(position at) &noexcept { return {at, {}}; }
    iterator_range<position, std::unreachable_sentinel_t> around() &noexcept { return around(position(first())); }
    iterator_range<const_position, std::unreachable_sentinel_t> around() const &noexcept
    {
        return {const_position(first()), {}};
    }
    template <class... Ends>
    auto around(Ends... ends) &&
    {
        return named(*this).around(ends...);
    }

    /* Walks once around during which what was delivered may be removed. */
    auto positions() &noexcept { return this->walk(position(first()), position(last()), 1); }
    template <class Accepts>
    auto positions_if(Accepts accepts) &noexcept
    {
        return this->walk(position(first()), position(last()), 1, std::move(accepts));
    }
    auto positions_reversed() &noexcept { return this->walk(position(last()), position(first()), 0); }
    auto positions(position from, position to) &noexcept { return this->walk(from, to, 1); }
    auto positions_reversed(position from, position to) &noexcept { return this->walk(from, to, 0); }
    template <class... Ends>
    auto positions(Ends... ends) &&
    {
        return named(*this).positions(ends...);
    }
    template <class... Ends>
    auto positions_if(Ends... ends) &&
    {
        return named(*this).positions_if(ends...);
    }
    template <class... Ends>
    auto positions_reversed(Ends... ends) &&
    {
        return named(*this).positions_reversed(ends...);
    }

private:
    template <class Backwards>
    iterator_range<ring_iterator<Backwards>> backwards() const noexcept
    {
        return {ring_iterator<Backwards>(last(), last()), ring_iterator<Backwards>::end(last(), last())};
    }
};

/* ---- edits that are compiled into the caller ---- */

/* Links a node at the back, as the C functions do. */
template <class Head, class Node>
void link_last(Head &head, Node *node, bool ring) noexcept
{
    Node *const last = static_cast<Node *>(head.last);
    if (last) {
        node->prev = last;
        node->next = last->next; /* null, or the first: to read it sends for what comes next in memory */
        last->next = node;
        if (ring)
            static_cast<Node *>(head.first)->prev = node;
    } else {
        node->prev = node->next = ring ? node : nullptr;
        head.first = node;
    }
    head.last = node;
    ++head.count;
}

/* An open chain becomes a ring, which it may be already. */
template <class Node, class Head>
void close_chain(Head &head) noexcept
{
    if (head.first) {
        static_cast<Node *>(head.first)->prev = static_cast<Node *>(head.last);
        static_cast<Node *>(head.last)->next = static_cast<Node *>(head.first);
    }
    head.closed = 1;
}
/* A ring becomes an open chain, which it may be already. */
template <class Node, class Head>
void open_ring(Head &head) noexcept
{
    if (head.first) {
        static_cast<Node *>(head.first)->prev = nullptr;
        static_cast<Node *>(head.last)->next = nullptr;
    }
    head.closed = 0;
}

/* Removes the items that `accepts` accepts, and returns their number. After an exception those up to the item that it was
   thrown for are done with. */
template <class List, class Accepts>
std::size_t remove_if(List &list, Accepts accepts)
{
    const std::size_t before = list.size();
    for (auto at : list.positions()) {
        if (accepts(*at))
            list.remove(at);
    }
    return before - list.size();
}

/* ---- comparison ---- */

/* Whether two lists deliver equal items. */
template <class Range>
bool equal_items(const Range &a, const Range &b)
{
    auto y = b.begin();
    for (auto x = a.begin(); x != a.end(); ++x, ++y) {
        if (y == b.end() || !(*x == *y))
            return false;
    }
    return y == b.end();
}

/* The order of two lists, by their first items that differ. */
template <class Range>
auto compared_items(const Range &a, const Range &b)
{
    using order = decltype(*a.begin() <=> *b.begin());
    auto x = a.begin();
    auto y = b.begin();
    for (; x != a.end() && y != b.end(); ++x, ++y) {
        if (const order c = *x <=> *y; c != 0)
            return c;
    }
    return order(int{x != a.end()} <=> int{y != b.end()});
}

/* ---- construction from ranges ---- */

/* Ranges that a container of `Value` can be made from, other than such a container itself. */
template <class Range, class Container, class Value>
concept range_of = !std::same_as<std::remove_cvref_t<Range>, Container> && requires(Range & range)
{
    {
        *std::begin(range)
        } -> std::convertible_to<Value>;
    std::end(range);
};

/* Makes a container of what a range delivers: mova::to<mova::element_list<int>>(range). */
template <class Container, class Range>
Container to(Range &&range)
{
    if constexpr (std::constructible_from<Container, Range>)
        return Container(std::forward<Range>(range));
    else {
        static_assert(never<Container, Range>,
                      "mova::to: the container cannot be made of this range: what that delivers does "
                      "not convert to what this holds");
        __builtin_unreachable();
    }
}

} // namespace mova

template <class Iterator, class Sentinel>
inline constexpr bool std::ranges::enable_borrowed_range<mova::iterator_range<Iterator, Sentinel>> = true;
template <class Iterator, class Sentinel>
inline constexpr bool std::ranges::enable_view<mova::iterator_range<Iterator, Sentinel>> = true;
template <class Links, class Position, class Accepts>
inline constexpr bool std::ranges::enable_view<mova::position_walk<Links, Position, Accepts>> = true;

#endif
