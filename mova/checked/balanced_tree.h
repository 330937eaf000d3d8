/* SPDX-License-Identifier: MIT */
/* The rows of the balanced tree.

   A tree's blocks are its nodes, its iterators, and the list of these. The list and its nodes are noted as nobody's, for a
   program may look at them with the functions of lists. So are the nodes that GT_allocate_node makes, for which tree they
   are linked into nobody is told. */
#ifndef MOVA_CHECKED_BALANCED_TREE_H
#define MOVA_CHECKED_BALANCED_TREE_H

#include "internal/chains.h"
#include "internal/roles.h"

#include <mova/tree/balanced_tree.h>
#include <mova/tree/internal/invariants.h>

#include <cstring>

namespace mova::checked {

namespace gt {

/* Whether all nodes of a subtree are there. One that is as high as that goes around in a circle. */
inline bool is_subtree_there(const GT_tree_item *node, int height = 4096)
{
    return !node || (height > 0 && is_there(node) && is_subtree_there(node->left, height - 1) &&
                     is_subtree_there(node->right, height - 1));
}

inline bool are_iterators_there(const GT_tree &of)
{
    if (!is_there(of.iterators) || !is_chain_there(of.iterators->first, of.iterators->last, of.iterators->count))
        return false;
    const GL_node *node = of.iterators->first;
    for (int32_t left = of.iterators->count; node && left > 0; --left, node = node->next) {
        if (!is_there(node->item))
            return false;
    }
    return true;
}

/* As broken_invariant, of a tree whose links may lead anywhere. */
inline int broken_invariant(const void *of)
{
    const GT_tree &tree = *static_cast<const GT_tree *>(of);
    return !is_subtree_there(tree.root) ? 1 : !are_iterators_there(tree) ? 5 : mova::broken_invariant(tree, nullptr);
}

/* The most nodes that a tree of its height has. The way down on the higher side takes as many steps as it is high. */
inline int64_t most_nodes(const GT_tree &of)
{
    int64_t nodes = 1;
    const GT_tree_item *node = of.root;
    for (int steps = 0; node && steps < 40 && is_there(node); ++steps, nodes *= 2)
        node = node->balance > 0 ? node->right : node->left;
    return nodes;
}

} // namespace gt

inline constexpr family balanced_tree = {
    "tree",
    "balanced tree",
    "node",
    false,
    nullptr,
    gt::broken_invariant,
    [](const void *tree) { return gt::most_nodes(*static_cast<const GT_tree *>(tree)); },
    true,
};

namespace gt {

/* No callback of a tree may call a function of trees. */
struct outside_callbacks : role {
    static void before(call &made, const auto &)
    {
        const running_call *const outer =
            made.outer_call([](const running_call &of) { return std::strncmp(of.function, "GT_", 3) == 0; });
        if (outer)
            made.wrong().say("a tree is calling back in %s", outer->function);
    }
};

/* The tree, of functions that do nothing where it is null. */
struct tree_or_null : role {
    static void before(call &made, const auto &arguments)
    {
        if (std::get<0>(arguments))
            container<0, balanced_tree>(use::empty).before(made, arguments);
    }
};

/* A position of the tree. Code that links nodes itself may have moved one here: the tree is asked. */
struct own_position : role {
    static void before(call &made, const auto &arguments)
    {
        const auto [in, sought] = arguments;
        const entry *const known = sought ? find(sought) : nullptr;
        if (made.used(0) != 0 && known && known->live && resolved(known->owner) != made.used(0)) {
            const GT_tree_item *node = in->first;
            while (node && node != sought)
                node = node->next;
            if (node)
                return;
        }
        made.judge_position(balanced_tree, made.used(0), sought);
    }
};

/* A node that is in no tree. One that GT_allocate_node made is of nobody. */
struct lone_node : role {
    static void before(call &made, const auto &arguments)
    {
        const GT_tree_item *const node = std::get<0>(arguments);
        const entry *const known = node ? find(node) : nullptr;
        if (!known || known->live || known->owner != 0)
            return made.judge_position(balanced_tree, 0, node);
        if (!sees_every_block())
            return;
        made.wrong().say("the position was removed");
        made.wrong().add(known->last_place, "%-10s removed in   ", "position");
    }
};

struct makes_tree : makes<balanced_tree> {
    static void after(call &made, const auto &arguments, GT_tree *result)
    {
        makes::after(made, arguments, result);
        if (result)
            book(result->iterators, kind::block, 0, made.where());
    }
};

/* The result is a new iterator. */
struct makes_iterator : role {
    static void after(call &made, const auto &, const GT_tree_iter *result)
    {
        entry *const known = result ? find(result) : nullptr;
        if (!known || !known->live)
            return;
        known->what = kind::iterator;
        const GL_node *const in_list = result->tree->iterators->last;
        if (in_list && in_list->item == result)
            book(in_list, kind::block, 0, made.where());
    }
};

/* What a function does with an iterator. */
enum class iterator_use {
    step,         /* delivers its cursor next */
    copy_next,    /* reads its cursor */
    copy_current, /* reads its current node, if there is one */
    read_current, /* the same, which must be there */
    end,
};

struct iterator : role {
    constexpr explicit iterator(iterator_use does) : how(does) {}

    void before(call &made, const auto &arguments) const
    {
        const GT_tree_iter *const given = std::get<0>(arguments);
        if (!given)
            return made.wrong().say("the iterator is null");
        const entry *const known = find(given);
        if (!known || known->what != kind::iterator)
            return;
        if (!known->live)
            return judge_ended(made, given, *known);
        if (!given->tree) {
            made.wrong().say("the iterator outlived its tree");
            return show(made, given, *known);
        }
        made.uses(resolved(known->owner), 0);
        made.blocks_are_of(made.used(0));
        judge_rest(made, given, *known);
    }

    iterator_use how;

private:
    static void show(call &made, const void *given, const entry &known)
    {
        made.wrong().add(nullptr, "%-10s %p of tree %p", "iterator", given, owner_at(resolved(known.owner)).container);
        made.wrong().show_container(resolved(known.owner));
    }

    static void judge_ended(call &made, const void *given, const entry &known)
    {
        if (!sees_every_block())
            return;
        made.wrong().say("the iterator has ended");
        made.wrong().add(nullptr, "%-10s %p", "iterator", given);
        made.wrong().add(known.last_place, "%-10s ended in     ", "");
    }

    /* A removal may leave an iterator on the record that it released: the header's trap. */
    void judge_rest(call &made, const GT_tree_iter *given, const entry &known) const
    {
        if (how == iterator_use::end)
            return;
        const bool by_cursor = how == iterator_use::step || how == iterator_use::copy_next;
        const GT_tree_item *const rests_on = by_cursor ? given->cursor : given->current;
        const entry *const node = rests_on ? find(rests_on) : nullptr;
        if (!rests_on && how == iterator_use::read_current)
            made.wrong().say("the iterator has no current item");
        else if (node && !node->live)
            made.wrong().say("the iterator rests on a removed position");
        else
            return;
        if (node)
            made.wrong().add(node->last_place, "%-10s removed in   ", "position");
        show(made, given, known);
    }
};

/* The way to a position is asked of the comparison: it misses what is there where a key has changed, or where the comparison
   contradicts itself. The library raises this line then. */
template <int32_t Line>
struct is_led_to : role {
    static constexpr raise_meaning meaning = {Line, Line == 481 ? "the comparison does not lead to the position"
                                                                : "the comparison contradicts itself"};

    static void before(call &made, const auto &) { made.raise_means(made.used(0) != 0 ? &meaning : nullptr); }
};

/* ---- the comparison ---- */

/* The new node's neighbours were compared with it on the way down. Where one of them is the item itself, and was found to
   be before or after it, the comparison contradicts itself. */
struct differs_from_itself : role {
    static void after(call &made, const auto &arguments, const GT_tree_item *node)
    {
        const GT_tree *const in = std::get<0>(arguments);
        if (made.used(0) == 0 || !node || node->item != std::get<1>(arguments))
            return;
        const bool is_before_itself = node->next && node->next->item == node->item;
        const bool is_after_itself = node->prev && node->prev->item == node->item && !in->dupl_allowed;
        if (is_before_itself || is_after_itself) {
            made.wrong().say("the comparison contradicts itself: an item goes %s itself",
                             is_before_itself ? "before" : "after");
            made.wrong().show_container(made.used(0));
        }
    }
};

inline int sign(int32_t order)
{
    return (order > 0) - (order < 0);
}

/* Asks about a node and the next, without the lock, for a comparison may do much. */
inline void ask_about(call &made, const GT_tree &in, const GT_tree_item *before, const GT_tree_item *node)
{
    if (made.is_wrong() || !before || !node)
        return;
    const int order = sign(in.compare(node->item, before->item));
    if (order != -sign(in.compare(before->item, node->item)))
        made.wrong().say("the comparison contradicts itself");
    else if (order < 0 || (order == 0 && !in.dupl_allowed))
        made.wrong().say("neighbours in the tree are not in order");
    else
        return;
    made.wrong().add(nullptr, "%-10s %p and %p", "items", before->item, node->item);
}

/* With "order": asks the neighbours of the position that a descent led to, or is to lead to. */
template <class Position>
struct asks_neighbours : role {
    static void ask(call &made, const auto &arguments, const auto &...result)
    {
        const GT_tree *const in = std::get<0>(arguments);
        const GT_tree_item *const node = Position::of(arguments, result...);
        if (made.used(0) == 0 || !node)
            return;
        ask_about(made, *in, node->prev, node);
        ask_about(made, *in, node, node->next);
    }
};

struct the_result {
    static const GT_tree_item *of(const auto &, const GT_tree_item *result) { return result; }
};
struct the_one_stored {
    static const GT_tree_item *of(const auto &arguments, int)
    {
        return std::get<2>(arguments) ? *std::get<2>(arguments) : nullptr;
    }
};

inline constexpr container<0, balanced_tree> read{use::read}, edit{use::edit};
inline constexpr tree_or_null empty_or_null;
inline constexpr released<0, balanced_tree> gone_or_null{true};
inline constexpr own_position at;
inline constexpr lone_node alone;
inline constexpr outside_callbacks outside;
inline constexpr iterator step{iterator_use::step}, copy_next{iterator_use::copy_next},
    copy_current{iterator_use::copy_current}, read_current{iterator_use::read_current}, end{iterator_use::end};
inline constexpr makes_iterator walk;
inline constexpr asks_neighbours<the_result> of_result;
inline constexpr asks_neighbours<the_one_stored> of_stored;

} // namespace gt

namespace rows {

inline constexpr row GT_create_with_dupl_allowed{gt::outside, gt::makes_tree{}};
inline constexpr row GT_create_with_dupl_not_allowed{gt::outside, gt::makes_tree{}};
inline constexpr row GT_release{gt::outside, gt::gone_or_null};
inline constexpr row GT_total_release{gt::outside, gt::gone_or_null};
inline constexpr row GT_make_empty{gt::outside, gt::empty_or_null};
inline constexpr row GT_total_make_empty{gt::outside, gt::empty_or_null};

inline constexpr row GT_insert_item{gt::outside, gt::edit, gt::differs_from_itself{}, gt::of_result};
inline constexpr row GT_find_item{gt::outside, gt::read, stores_position<2>{}, gt::of_stored};
inline constexpr row GT_search_item{gt::outside, gt::read, stores_position<2>{}, gt::of_stored};
inline constexpr row GT_count_items{gt::outside, gt::read};

inline constexpr row GT_remove_item{gt::outside, gt::edit, gt::at, gt::is_led_to<481>{}};
inline constexpr row GT_remove_item_global{gt::outside, gt::edit, gt::at};
inline constexpr row GT_find_and_remove_item{gt::outside, gt::edit, gt::is_led_to<579>{}};
inline constexpr row GT_remove_first_item{gt::outside, gt::edit};

inline constexpr row GT_allocate_node{gt::outside};
inline constexpr row GT_free_node{gt::outside, gt::alone};

inline constexpr row GT_all_items{gt::outside, gt::edit, gt::walk};
inline constexpr row GT_all_items_conditional{gt::outside, gt::edit, gt::walk};
inline constexpr row GT_all_items_while_conditioned{gt::outside, gt::edit, gt::walk};
inline constexpr row GT_from_current{gt::outside, gt::copy_current, gt::walk};
inline constexpr row GT_from_current_conditional{gt::outside, gt::copy_current, gt::walk};
inline constexpr row GT_from_current_while_conditioned{gt::outside, gt::copy_current, gt::walk};
inline constexpr row GT_from_next{gt::outside, gt::copy_next, gt::walk};
inline constexpr row GT_from_next_conditional{gt::outside, gt::copy_next, gt::walk};
inline constexpr row GT_from_next_while_conditioned{gt::outside, gt::copy_next, gt::walk};
inline constexpr row GT_next_item{gt::outside, gt::step};
inline constexpr row GT_next_position{gt::outside, gt::step};
inline constexpr row GT_current_item{gt::outside, gt::read_current};
inline constexpr row GT_end_iterator{gt::outside, gt::end};

inline constexpr row GT_sort{gt::outside, gt::edit};
inline constexpr row GT_check{gt::outside};
inline constexpr row GT_print_tree{gt::outside, gt::read};

} // namespace rows

} // namespace mova::checked

#endif
