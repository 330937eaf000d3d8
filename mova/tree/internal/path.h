/* SPDX-License-Identifier: MIT */
/* The way that an edit goes down a tree. It is kept, so that the edit can come back up and rebalance. */
#ifndef MOVA_TREE_INTERNAL_PATH_H
#define MOVA_TREE_INTERNAL_PATH_H

#include <algorithm>
#include <iterator>

#include <mova/tree/balanced_tree.h>
#include <mova/tree/internal/rebalancing.h>

namespace mova::gt {

/* Where a step goes from a node. The last is a step to the left as well; what is looked for may also be on the right. */
enum class turn : intptr_t { to_left, to_right, to_left_first };

/* From the node that a link holds to one of its children. */
struct step {
    tree_item **link;
    turn taken;

    side taken_side() const { return taken == turn::to_right ? right : left; }
};

/* The steps from the root on, in an array of somebody else's. A path is copied as an iterator is. */
struct path {
    step *first, *room_end;
    step *end = first;

    bool is_empty() const { return end == first; }
    bool is_full() const { return end == room_end; }
    void push(tree_item **link, turn taken) { *end++ = {link, taken}; }
    step pop() { return *--end; }

    /* Goes back to the last node whose right side may still be searched, and takes the step to it. Returns the link
       there, or null where there is no such node. */
    tree_item **turn_right()
    {
        for (; !is_empty(); --end) {
            step &last = end[-1];
            if (last.taken == turn::to_left_first) {
                last.taken = turn::to_right;
                return &(*last.link)->right;
            }
        }
        return nullptr;
    }
};

/* Higher than any balanced tree that fits into memory. */
constexpr int sound_height = 64;

/* Room for a path. Its contents are not set. */
using path_room = step[sound_height];

inline path empty_path(path_room &room)
{
    return {room, std::end(room)};
}

/* Should a program have put the balances wrong, a tree may be higher. Then the edit goes on, below this call, with a
   copy of its path that has room for twice as many steps. The stack holds it, not the heap, so that a comparison may
   throw or jump. */
template <class GoOn>
[[gnu::noinline]] auto with_longer_path(path full, GoOn go_on)
{
    const auto room = static_cast<size_t>(2 * (full.room_end - full.first));
    auto *const first = static_cast<step *>(__builtin_alloca(room * sizeof(step)));
    return go_on(path{first, first + room, std::copy(full.first, full.end, first)});
}

/* Rebalances from the end of the way upwards, as long as each subtree has grown by the insertion below it. */
inline void rebalance_grown_path(path way)
{
    for (bool has_grown = true; has_grown && !way.is_empty();) {
        const step last = way.pop();
        has_grown = rebalance_grown(last.link, last.taken_side());
    }
}

/* The same, as long as each subtree has shrunk by the removal below it. */
inline void rebalance_shrunk_path(path way)
{
    for (bool has_shrunk = true; has_shrunk && !way.is_empty();) {
        const step last = way.pop();
        has_shrunk = rebalance_shrunk(last.link, last.taken_side());
    }
}

} // namespace mova::gt

#endif
