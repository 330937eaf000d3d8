/* SPDX-License-Identifier: MIT */
/* What the interpreters of the lists share: three lists and four iterators beside models made of vectors, the stepping rule,
   what edits leave of an iterator, and the comparison. */
#ifndef MOVA_TESTS_MODEL_LIST_INTERPRETER_H
#define MOVA_TESTS_MODEL_LIST_INTERPRETER_H

#include "expected_calls.h"
#include "model.h"

#include <mova/lists/internal/invariants.h>

#include <array>
#include <iterator>

namespace mova::test {

/* A list as its model has it. A Node says what is kept at a `position`: the list's node or, where the items carry the
   links, the item. */
template <class Node>
struct model_list {
    std::vector<Node> nodes;
    bool closed = false;

    std::ptrdiff_t size() const { return std::ssize(nodes); }
    bool empty() const { return nodes.empty(); }
    bool is_index(int32_t index) const { return index >= 0 && index < size(); }
    const Node &at(std::ptrdiff_t index) const { return nodes[static_cast<std::size_t>(index)]; }

    /* The size, where there is no such node. */
    std::ptrdiff_t index_of(const void *position) const
    {
        const auto found = std::find_if(nodes.begin(), nodes.end(),
                                        [&](const Node &candidate) { return candidate.position == position; });
        return found - nodes.begin();
    }
    bool holds(const void *position) const { return index_of(position) < size(); }

    /* The position `steps` further on: around a ring, or null past an open end. */
    auto neighbour(const void *position, std::ptrdiff_t steps) const
    {
        std::ptrdiff_t index = index_of(position) + steps;
        if (closed)
            index = (index % size() + size()) % size();
        return index < 0 || index >= size() ? nullptr : at(index).position;
    }

    void insert(std::ptrdiff_t index, const Node &inserted) { nodes.insert(nodes.begin() + index, inserted); }

    void roll_to(const void *position) { std::rotate(nodes.begin(), nodes.begin() + index_of(position), nodes.end()); }
};

/* Where the element list raises, whose errors the double list passes on. */
constexpr int32_t line_of_short_replacement = 557, line_of_roll_to_first = 989;

/* The lists name the link that an iterator follows differently. */
template <class Iterator>
auto &next_of(Iterator &iterator)
{
    if constexpr (requires { iterator.upcoming; })
        return iterator.upcoming;
    else
        return iterator.next;
}

template <class List, class Iterator, class Node>
class list_interpreter : public byte_interpreter {
public:
    using byte_interpreter::byte_interpreter;

    void begin() final
    {
        for (List *&each : lists_)
            each = created();
    }

protected:
    using list_model = model_list<Node>;
    using position_type = decltype(Node::position);

    struct iterator_pair {
        Iterator real;
        Iterator model;
        std::size_t list;
        bool alive;
    };

    /* ---- what differs ---- */

    virtual void operate_on_selected() = 0;

    /* Makes a list, and releases the one with this index, with all that it holds. */
    virtual List *created() = 0;
    virtual void release(std::size_t index) = 0;

    /* What the test callback writes down of a node, and what it answers. */
    virtual std::string text_of(const Node &node) const = 0;
    virtual bool accepts(const Iterator &iterator, const Node &node) const = 0;

    /* What makes nodes differ, where every small case is tried, in which there are two lists and an iterator; and whether
       that is one of the few that there should be. */
    virtual int64_t label_of(const Node &node) const = 0;
    virtual bool is_small(const Node &node) const = 0;

    /* Throws mismatch where the node in the list's order is not the one in the model. */
    virtual void compare_node(const void *node, const Node &expected) const = 0;

    /* ---- the frame ---- */

    void operate() final
    {
        selected_ = any_list();
        operate_on_selected();
    }

    /* The first list is shorter where the second has a node, which is the most. With an iterator the list that it walks on is
       shorter, and the other empty. */
    bool describe(state_text &state, std::size_t most) const final
    {
        const std::size_t of_second = models_[1].nodes.size();
        bool is_within = models_[0].nodes.size() + 2 * of_second <= most && of_second <= 1 && !models_[1].closed;
        for (std::size_t i = 0; i < 2; ++i) {
            state.add(models_[i].size(), models_[i].closed);
            if constexpr (requires { lists_[i]->element_size; })
                state.add(lists_[i]->element_size);
            for (const Node &node : models_[i].nodes) {
                state.add(label_of(node));
                is_within = is_within && is_small(node);
            }
        }
        const iterator_pair &walking = iterators_[0];
        state.add(walking.alive);
        if (!walking.alive)
            return is_within;
        for (const void *position : {walking.model.current, next_of(walking.model), walking.model.end})
            state.add(position ? models_[walking.list].index_of(position) : -1);
        state.add(walking.list, walking.model.forward, walking.model.test != nullptr);
        return is_within && models_[walking.list].nodes.size() + 2 <= most && models_[1 - walking.list].empty();
    }

    void finish() final
    {
        for (std::size_t i = 0; i < lists_.size(); ++i)
            release(i);
        expected_.require_nothing_left();
    }

    /* The list's nodes go back, first to last. */
    void expect_release_of_nodes(std::size_t index, std::size_t node_size)
    {
        for (const Node &each : models_[index].nodes)
            expected_.dealloc(each.position, node_size);
        note_emptied(index);
    }

    void release_selected()
    {
        release(selected_);
        lists_[selected_] = created();
    }

    /* ---- what the operations choose ---- */

    List *list() { return lists_[selected_]; }
    list_model &selected() { return models_[selected_]; }
    std::size_t list_count() const { return bytes_.is_exhaustive() ? 2 : lists_.size(); }
    std::size_t any_list() { return bytes_.below(list_count()); }
    iterator_pair &any_iterator() { return iterators_[bytes_.below(iterators_.size(), 1)]; }

    /* An iterator is the caller's record: what is started knows nothing of what was there. */
    bool may_start() const { return !bytes_.is_exhaustive() || !iterators_[0].alive; }
    std::ptrdiff_t any_index() { return static_cast<std::ptrdiff_t>(bytes_.below(selected().nodes.size())); }
    Node &any_node() { return selected().nodes[bytes_.below(selected().nodes.size())]; }
    position_type any_position() { return any_node().position; }
    position_type any_position_or_null() { return selected().empty() ? nullptr : any_position(); }
    position_type first() { return selected().empty() ? nullptr : selected().nodes.front().position; }
    position_type last() { return selected().empty() ? nullptr : selected().nodes.back().position; }

    /* An index, or one of the two before the first and the two after the last. */
    int32_t any_near_index() { return static_cast<int32_t>(bytes_.below(selected().nodes.size() + 4)) - 2; }
    int32_t any_steps() { return bytes_.between(-12, 11, -6, 6); }
    int any_direction() { return static_cast<int>(bytes_.below(3, 2)) - 1; }

    /* A range whose walk ends: `to` ahead of `from`, which on a ring every node is. Indices around the ring. */
    bool any_range(std::size_t &from, std::size_t &length)
    {
        const std::size_t count = selected().nodes.size();
        if (count == 0)
            return false;
        from = bytes_.below(count);
        length = 1 + bytes_.below(selected().closed ? count : count - from);
        return true;
    }
    Node &around(std::size_t index) { return selected().nodes[index % selected().nodes.size()]; }

    /* Makes a call that raises or not, with raises thrown or returned from, by a byte. Returns whether it returned. */
    template <class Call>
    bool returns_from(bool raises, Call call)
    {
        return expected_.returns_from(raises, bytes_.below(2) == 1, call);
    }

    /* ---- what edits do to the model and to the iterators ---- */

    void note_removal(const void *removed)
    {
        for (iterator_pair &pair : iterators_) {
            const bool ran_past_its_end = pair.list == selected_ && pair.model.end == removed && selected().closed;
            pair.alive = pair.alive && next_of(pair.model) != removed && !ran_past_its_end;
        }
        selected().nodes.erase(selected().nodes.begin() + selected().index_of(removed));
    }

    void forget_iterators(std::size_t index)
    {
        for (iterator_pair &pair : iterators_)
            pair.alive = pair.alive && pair.list != index;
    }

    void note_emptied(std::size_t index)
    {
        models_[index] = {};
        forget_iterators(index);
    }

    /* An iterator on a list that closes goes round for ever where its end is no longer there. */
    void note_closed(bool closed)
    {
        selected().closed = closed;
        for (iterator_pair &pair : iterators_) {
            if (pair.alive && pair.list == selected_ && closed && next_of(pair.model))
                pair.alive = selected().holds(pair.model.end);
        }
    }

    /* The selected list has taken over the nodes of another, which is made anew. */
    void note_joined(std::size_t source)
    {
        require(!lists_[source], "the source variable was not cleared");
        list_model &taken = models_[source];
        selected().nodes.insert(selected().nodes.end(), taken.nodes.begin(), taken.nodes.end());
        for (iterator_pair &pair : iterators_)
            pair.list = pair.list == source ? selected_ : pair.list;
        taken = {};
        lists_[source] = created();
    }

    /* Puts a list that was made into the place of another than the selected one. */
    void adopt(List *made, const list_model &adopted)
    {
        const std::size_t target = (selected_ + 1) % list_count();
        release(target);
        lists_[target] = made;
        models_[target] = adopted;
    }

    void start(const Iterator &real, const Iterator &modelled) { any_iterator() = {real, modelled, selected_, true}; }

    /* ---- the stepping rule ---- */

    /* Returns whether a node is delivered; `reached` is the last that was looked at, and stays where there was none. */
    bool step_model(iterator_pair &pair, const Node *&reached)
    {
        Iterator &iterator = pair.model;
        const list_model &nodes = models_[pair.list];
        while (next_of(iterator)) {
            reached = &nodes.at(nodes.index_of(next_of(iterator)));
            iterator.current = next_of(iterator);
            next_of(iterator) = iterator.current == iterator.end
                                    ? nullptr
                                    : nodes.neighbour(iterator.current, iterator.forward ? 1 : -1);
            if (!iterator.test)
                return true;
            expected_.call("test " + text_of(*reached));
            if (accepts(iterator, *reached))
                return true;
        }
        return false;
    }

    /* ---- comparison ---- */

    void compare() override
    {
        for (std::size_t i = 0; i < lists_.size(); ++i)
            compare_list(*lists_[i], models_[i]);
        for (const iterator_pair &pair : iterators_) {
            if (pair.alive)
                compare_iterator(pair.real, pair.model);
        }
        expected_.compare();
    }

    void compare_list(const List &list, const list_model &expected) const
    {
        const int broken = broken_invariant(list);
        require(broken == 0, "invariant " + std::to_string(broken) + " is broken");
        require(list.count == expected.size(), "another number of nodes");
        if constexpr (requires { list.closed; })
            require(list.closed == (expected.closed ? 1 : 0), "another closed flag");
        auto reached = static_cast<position_type>(list.first);
        for (const Node &node : expected.nodes) {
            require(reached == node.position, "another node");
            compare_node(reached, node);
            reached = reached->next;
        }
    }

    static void compare_iterator(const Iterator &real, const Iterator &expected)
    {
        require(real.current == expected.current, "iterator: another current");
        require(next_of(real) == next_of(expected), "iterator: another next");
        require(real.end == expected.end, "iterator: another end");
        require(real.forward == expected.forward, "iterator: another direction");
        require(real.test == expected.test, "iterator: another test");
        if constexpr (requires { real.element_size; })
            require(real.element_size == expected.element_size, "iterator: another element size");
    }

    recording_host &host_ = recording_host::get();
    expected_calls expected_;
    std::array<List *, 3> lists_{};
    std::array<list_model, 3> models_;
    std::array<iterator_pair, 4> iterators_{};
    std::size_t selected_ = 0;
};

} // namespace mova::test

#endif
