/* SPDX-License-Identifier: MIT */
/* The balanced tree's search, insertion and removal with the comparison compiled in.

   They do what GT_search_item, GT_find_item, GT_insert_item and GT_remove_item do: the same comparisons in the same order,
   the same fields afterwards, the same host calls, the same iterators led on. Both may be used on one tree in turns. The
   sources of those functions explain the steps; here they are written for an `order` that the compiler sees through:

       order(node)     negative where what is placed or looked for goes before the node's item, zero where they are equal,
                       positive where it goes after

   A sound tree is never higher than sound_height. Where a program has put balances wrong, and the tree is higher, the C
   functions do the work. An `order` that throws leaves the tree as it was. */
#ifndef MOVA_CXX_TREE_STEPS_H
#define MOVA_CXX_TREE_STEPS_H

#include <cstddef>
#include <cstdint>

#include <mova/frame/host.h>
#include <mova/tree/balanced_tree.h>

namespace mova::tree_steps {

using node = GT_tree_item;

/* A side is the balance of a node that is higher there. */
constexpr int left = -1, right = +1;

/* The link to a node's child. It is computed, not chosen: the processor cannot foresee the side. */
inline node **child(node *of, bool on_right) noexcept
{
    static_assert(offsetof(node, right) == offsetof(node, left) + sizeof(node *));
    return reinterpret_cast<node **>(reinterpret_cast<char *>(of) + offsetof(node, left) + sizeof(node *) * on_right);
}
inline node *&child_at(node *of, int side) noexcept
{
    return *child(of, side == right);
}

/* One of two, taken by arithmetic for the same reason: all bits are set for the second. The compiler is not told where they
   come from, or it would make a branch of it again. */
class choice {
public:
    explicit choice(bool second) noexcept : mask_(-static_cast<std::uintptr_t>(second)) { __asm__("" : "+r"(mask_)); }

    bool is_second() const noexcept { return mask_ != 0; }
    template <class T>
    T *of(T *first, T *second) const noexcept
    {
        const auto a = reinterpret_cast<std::uintptr_t>(first), b = reinterpret_cast<std::uintptr_t>(second);
        return reinterpret_cast<T *>(a ^ ((a ^ b) & mask_));
    }
    node **child_of(node *parent) const noexcept
    {
        static_assert(offsetof(node, right) == offsetof(node, left) + sizeof(node *));
        return reinterpret_cast<node **>(reinterpret_cast<char *>(parent) + offsetof(node, left) +
                                         (mask_ & sizeof(node *)));
    }
    std::intptr_t side() const noexcept { return static_cast<std::intptr_t>(mask_ & 2) - 1; }

private:
    std::uintptr_t mask_;
};

inline void prefetch_children(const node *of) noexcept
{
    __builtin_prefetch(of->left);
    __builtin_prefetch(of->right);
}

/* ---- search ---- */

/* The node nearest to the root that is equal, or null. */
template <class Order>
node *search(const GT_tree &t, Order order)
{
    node *at = t.root;
    while (at) {
        prefetch_children(at);
        const auto c = order(at->item);
        if (c < 0) {
            at = at->left;
            continue;
        }
        if (c == 0)
            break;
        at = at->right;
    }
    return at;
}

/* The first node that `is_sought` holds of on the ways that the order leads, or null. Of equal items it goes both ways. */
template <class IsSought, class Order>
node *find(node *at, IsSought is_sought, Order order)
{
    while (at && !is_sought(at)) {
        prefetch_children(at);
        const auto c = order(at->item);
        if (c == 0) {
            if (node *const found = find(at->left, is_sought, order))
                return found;
        }
        at = *child(at, !(c < 0));
    }
    return at;
}

/* The first node, in order, that `goes_before` does not hold of; null where there is none. */
template <class GoesBefore>
node *first_not(const GT_tree &t, GoesBefore goes_before)
{
    node *found = nullptr;
    for (node *at = t.root; at;) {
        prefetch_children(at);
        const bool before = goes_before(at);
        found = before ? found : at;
        at = *child(at, before);
    }
    return found;
}

/* ---- the way down ---- */

constexpr int sound_height = 64;

/* A step from the node that a link holds. A search that the item of a node is equal to goes left first. */
struct step {
    node **link;
    std::intptr_t side;
};
constexpr std::intptr_t left_first = -2;

struct path {
    step steps[sound_height];
    int length = 0;

    bool is_full() const noexcept { return length == sound_height; }
    void push(node **link, std::intptr_t side) noexcept { steps[length++] = {link, side}; }

    /* Goes back to the last node whose right side may still be searched. Returns the link there, or null. */
    node **turn_right() noexcept
    {
        for (; length > 0; --length) {
            step &last = steps[length - 1];
            if (last.side == left_first) {
                last.side = right;
                return &(*last.link)->right;
            }
        }
        return nullptr;
    }
};

/* ---- rotations: `high` is the side that is too high ---- */

inline void rotate_single(node **link, int high) noexcept
{
    node *const a = *link, *const b = child_at(a, high);
    child_at(a, high) = child_at(b, -high);
    child_at(b, -high) = a;
    *link = b;
}

inline void rotate_double(node **link, int high) noexcept
{
    node *const a = *link, *const b = child_at(a, high), *const c = child_at(b, -high);
    child_at(b, -high) = child_at(c, high);
    child_at(c, high) = b;
    child_at(a, high) = child_at(c, -high);
    child_at(c, -high) = a;
    a->balance = c->balance == high ? -high : 0;
    b->balance = c->balance == -high ? high : 0;
    c->balance = 0;
    *link = c;
}

/* One side has grown. Returns whether the whole subtree has. Raises as GT_insert_item. */
inline bool rebalance_grown(node **link, int grown)
{
    node *const a = *link;
    if (a->balance == 0 || a->balance == -grown) {
        a->balance += grown;
        return a->balance != 0;
    }
    if (a->balance != grown) {
        EX_raise_exception_line("gentree", grown == left ? 1181 : 1236, MOVA_PRECONDITION_BROKEN);
        return true;
    }
    node *const b = child_at(a, grown);
    if (b->balance == grown) {
        rotate_single(link, grown);
        a->balance = b->balance = 0;
    } else if (child_at(b, -grown)) {
        rotate_double(link, grown);
    }
    return false;
}

/* One side has shrunk. Returns whether the whole subtree has. */
inline bool rebalance_shrunk(node **link, int shrunk) noexcept
{
    node *const a = *link;
    if (a->balance == 0) {
        a->balance = -shrunk;
        return false;
    }
    if (a->balance == shrunk)
        a->balance = 0;
    if (a->balance != -shrunk)
        return true;
    const int high = -shrunk;
    node *const b = child_at(a, high);
    if (high == left ? b->balance > 0 : b->balance < 0) {
        rotate_double(link, high);
        return true;
    }
    rotate_single(link, high);
    const bool was_even = b->balance == 0;
    a->balance = was_even ? high : 0;
    b->balance = was_even ? -high : 0;
    return !was_even;
}

/* ---- iterators ---- */

template <class Visit>
void for_each_iterator(const GT_tree &t, Visit visit)
{
    for (const GL_node *at = t.iterators->first; at; at = at->next)
        visit(*static_cast<GT_tree_iter *>(at->item));
}

inline void lead_off(GT_tree_iter &iterator, const node *removed) noexcept
{
    if (iterator.current == removed)
        iterator.current = nullptr;
    if (iterator.cursor == removed)
        iterator.cursor = removed->next;
}

/* ---- insertion ---- */

/* Where an item goes: the empty link at the end of the way down, and the node that has it. */
struct place {
    path way;
    node **link;
    node *parent = nullptr;
    bool after = false; /* whether it is the right link */
};

/* So many levels of a tree lie in the processor's caches. There it is quickest to compute the next node, and to have both
   children and what they hold at hand when the comparison answers. Further down a guess of the side pays, though every second
   one is wrong: it reads ahead while the comparison waits for memory. So it does where items come in order. */
constexpr int near_levels = 12;

/* Both go down from `at`. They return an equal node that refuses the item; null where they went as far as they go. */
template <class Order>
node *go_down_near(place &to, node *&at, bool refuses_equal, Order order)
{
    const void *item = at ? at->item : nullptr;
    while (at && to.way.length < near_levels) {
        node *const on_left = at->left, *const on_right = at->right;
        const void *const left_item = (on_left ? on_left : at)->item;
        const void *const right_item = (on_right ? on_right : at)->item;
        const auto c = order(item);
        const choice taken(!(c < 0));
        if (c == 0 && refuses_equal)
            return at;
        to.way.push(to.link, taken.side());
        to.link = taken.child_of(at);
        to.parent = at;
        to.after = taken.is_second();
        at = taken.of(on_left, on_right);
        item = taken.of(left_item, right_item);
    }
    return nullptr;
}

template <class Order>
node *go_down_far(place &to, node *&at, bool refuses_equal, Order order)
{
    while (at && !to.way.is_full()) {
        prefetch_children(at);
        const auto c = order(at->item);
        if (c == 0 && refuses_equal)
            return at;
        to.parent = at;
        to.after = !(c < 0);
        to.way.push(to.link, to.after ? right : left);
        to.link = to.after ? &at->right : &at->left;
        at = *to.link;
    }
    return nullptr;
}

/* Whether items come in order, up or down, as far as the last insertion tells: its node lies beside that of the insertion before.
   Then each way down is nearly the one before, every guess of a side is right, and nothing computed is as quick. This is itself a
   guess, for all trees, which belong to one thread at a time. */
class arrivals {
public:
    static bool look_sorted() noexcept { return look_sorted_; }
    static void add(const node *made) noexcept
    {
        look_sorted_ = made->prev == last_ || made->next == last_;
        last_ = made;
    }

private:
    static inline const node *last_ = nullptr; /* compared, but never looked at: it may be gone */
    static inline bool look_sorted_ = false;
};

/* A new node at its place: all is as after GT_insert_item but for the balances. */
inline node *link_new(GT_tree &t, const place &at, void *item)
{
    node *const made = GT_allocate_node(item);
    node *const prev = at.parent ? at.after ? at.parent : at.parent->prev : nullptr;
    node *const next = at.parent ? at.after ? at.parent->next : at.parent : nullptr;
    made->prev = prev;
    made->next = next;
    (prev ? prev->next : t.first) = made;
    (next ? next->prev : t.last) = made;
    *at.link = made;
    for_each_iterator(t, [made](GT_tree_iter &iterator) {
        if (iterator.current && iterator.current->next == made)
            iterator.cursor = made;
    });
    return made;
}

struct insertion {
    node *at; /* the new node, or the one that is in its way */
    bool done;
};

template <class Order>
insertion insert(GT_tree &t, void *item, Order order)
{
    const bool refuses_equal = t.dupl_allowed == 0;
    node *at = t.root;
    place to;
    to.link = &t.root;
    node *in_the_way = arrivals::look_sorted() ? nullptr : go_down_near(to, at, refuses_equal, order);
    if (!in_the_way)
        in_the_way = go_down_far(to, at, refuses_equal, order);
    if (in_the_way)
        return {in_the_way, false};
    if (at) [[unlikely]] {
        node *const equal = refuses_equal ? search(t, order) : nullptr;
        return equal ? insertion{equal, false} : insertion{GT_insert_item(&t, item), true};
    }
    node *const made = link_new(t, to, item);
    arrivals::add(made);
    for (bool grown = true; grown && to.way.length > 0;) {
        const step last = to.way.steps[--to.way.length];
        grown = rebalance_grown(last.link, static_cast<int>(last.side));
    }
    return {made, true};
}

/* ---- removal ---- */

/* Where a step to the left was to be tried first, it was the one. */
inline void rebalance_shrunk_path(path &way)
{
    for (bool shrunk = true; shrunk && way.length > 0;) {
        const step last = way.steps[--way.length];
        shrunk = rebalance_shrunk(last.link, last.side == right ? right : left);
    }
}

/* Takes the node that `link` holds out of the tree, puts its predecessor into its place where it has two children, and
   rebalances. Returns false, and has changed nothing, where the way is too long for that. */
inline bool take_out(GT_tree &t, path &way, node **link)
{
    node *const removed = *link;
    if (!removed->left || !removed->right) {
        for_each_iterator(t, [removed](GT_tree_iter &iterator) { lead_off(iterator, removed); });
        *link = removed->right ? removed->right : removed->left;
    } else {
        const int place = way.length;
        node **last = &removed->left;
        way.push(link, left);
        for (; (*last)->right; last = &(*last)->right) {
            if (way.is_full()) [[unlikely]]
                return false;
            way.push(last, right);
        }
        node *const predecessor = *last;
        for_each_iterator(t, [removed, predecessor](GT_tree_iter &iterator) {
            lead_off(iterator, removed);
            /* Left on the record that is released, as the C function leaves them. */
            if (iterator.current == predecessor)
                iterator.current = removed;
            if (iterator.cursor == predecessor)
                iterator.cursor = removed;
        });
        *last = predecessor->left;
        predecessor->left = removed->left;
        predecessor->right = removed->right;
        predecessor->balance = removed->balance;
        *link = predecessor;
        if (place + 1 != way.length)
            way.steps[place + 1].link = &predecessor->left;
    }
    (removed->prev ? removed->prev->next : t.first) = removed->next;
    (removed->next ? removed->next->prev : t.last) = removed->prev;
    GT_free_node(removed);
    rebalance_shrunk_path(way);
    return true;
}

/* The same where the way is too long. The C function asks the tree's own comparison, and then looks everywhere: it finds what
   the order leads to. */
template <class Order>
bool remove_far_below(GT_tree &t, node *removed, Order order)
{
    const auto is_sought = [removed](const node *at) { return at == removed; };
    const bool leads_there = find(t.root, is_sought, order) != nullptr;
    if (leads_there)
        GT_remove_item_global(&t, removed);
    return leads_there;
}

/* Returns false where the comparisons do not lead to the node. */
template <class Order>
bool remove(GT_tree &t, node *removed, Order order)
{
    path way;
    node **link = &t.root;
    while (link) {
        node *const at = *link;
        if (!at) {
            link = way.turn_right();
            continue;
        }
        if (way.is_full()) [[unlikely]]
            return remove_far_below(t, removed, order);
        if (at == removed) {
            if (!take_out(t, way, link)) [[unlikely]]
                remove_far_below(t, removed, order);
            return true;
        }
        prefetch_children(at);
        const auto c = order(at->item);
        way.push(link, c == 0 ? left_first : c > 0 ? right : left);
        link = child(at, c > 0);
    }
    return false;
}

} // namespace mova::tree_steps

#endif
