/* SPDX-License-Identifier: MIT */
/* Operations on three element lists, open and closed, and four iterators, beside a model made of vectors. After
   every operation the result, the lists' contents and invariants, every iterator's fields, the raises, the tests asked
   and the host calls are compared. */
#include "list_interpreter.h"
#include "model.h"

#include <mova/lists/element_list.h>

#include <cstring>

namespace mova::test {

namespace {

/* An element is its size in bytes, all alike; few values, so that elements are equal to each other. */
constexpr std::size_t value_count = 6;
constexpr std::array<std::size_t, 5> sizes = {0, 1, 8, 12, 40};

/* The size that the test callback finds: every list of one run has the same. */
std::size_t element_size;

uint8_t value_of(const void *element)
{
    uint8_t value = 0;
    std::memcpy(&value, element, element_size ? 1 : 0);
    return value;
}

bool accepts_odd(uint8_t value)
{
    return value % 2 == 1;
}

int test_odd(void *element)
{
    recording_host::get().write_down("test " + std::to_string(value_of(element)));
    return accepts_odd(value_of(element)) ? 64 : 0;
}

struct node {
    EL_node *position;
    uint8_t value;
};

class interpreter : public list_interpreter<EL_list, EL_iterator, node> {
public:
    explicit interpreter(byte_source bytes) : list_interpreter(bytes)
    {
        element_size = sizes[bytes_.below(sizes.size(), 2)];
    }

private:
    using operation = void (interpreter::*)();
    using element_buffer = std::array<uint8_t, sizes.back()>;

    void operate_on_selected() override
    {
        static constexpr operation operations[] = {
            &interpreter::append,         &interpreter::append,           &interpreter::prepend,
            &interpreter::insert_before,  &interpreter::insert_after,     &interpreter::insert_at_index,
            &interpreter::remove,         &interpreter::remove_at_index,  &interpreter::remove_range,
            &interpreter::replace,        &interpreter::replace_range,    &interpreter::close_or_open,
            &interpreter::close_or_open,  &interpreter::advance,          &interpreter::look_up,
            &interpreter::count_range,    &interpreter::total_copy,       &interpreter::copy_range,
            &interpreter::join,           &interpreter::reverse,          &interpreter::roll,
            &interpreter::roll,           &interpreter::cut_open,         &interpreter::split,
            &interpreter::make_empty,     &interpreter::release_selected, &interpreter::start_iterator,
            &interpreter::start_iterator, &interpreter::step_iterator,    &interpreter::step_iterator,
            &interpreter::step_iterator,  &interpreter::step_iterator,
        };
        do_one_of(operations);
    }

    std::string text_of(const node &tested) const override { return std::to_string(tested.value); }
    bool accepts(const EL_iterator &, const node &tested) const override { return accepts_odd(tested.value); }

    void compare_node(const void *reached, const node &expected) const override
    {
        const element_buffer wanted = element(expected.value);
        const void *found = static_cast<const EL_node *>(reached) + 1;
        require(std::memcmp(found, wanted.data(), element_size) == 0, "another element");
    }

    int64_t label_of(const node &each) const override { return each.value; }
    bool is_small(const node &) const override { return true; }

    void compare() override
    {
        list_interpreter::compare();
        for (const EL_list *each : lists_)
            require(each->element_size == element_size, "another element size");
    }

    std::size_t node_size() const { return sizeof(EL_node) + element_size; }

    uint8_t any_value() { return element_size ? static_cast<uint8_t>(bytes_.below(value_count, 2)) : uint8_t{0}; }

    static element_buffer element(uint8_t value)
    {
        element_buffer bytes;
        bytes.fill(value);
        return bytes;
    }

    /* ---- operations ---- */

    EL_list *created() override
    {
        expected_.alloc(sizeof(EL_list));
        return EL_create(static_cast<uint32_t>(element_size));
    }

    void insert(std::ptrdiff_t index, EL_node *position, uint8_t value)
    {
        expected_.alloc(node_size());
        selected().insert(index, {position, value});
    }

    void append()
    {
        uint8_t value = any_value();
        insert(selected().size(), EL_append_after_last(list(), element(value).data()), value);
    }

    void prepend()
    {
        uint8_t value = any_value();
        insert(0, EL_insert_before_first(list(), element(value).data()), value);
    }

    void insert_before()
    {
        if (selected().empty())
            return append();
        const std::ptrdiff_t index = any_index();
        uint8_t value = any_value();
        insert(index, EL_insert_before(list(), selected().at(index).position, element(value).data()), value);
    }

    void insert_after()
    {
        if (selected().empty())
            return append();
        const std::ptrdiff_t index = any_index();
        uint8_t value = any_value();
        insert(index + 1, EL_insert_after(list(), selected().at(index).position, element(value).data()), value);
    }

    void insert_at_index()
    {
        int32_t index = any_near_index();
        uint8_t value = any_value();
        bool after = bytes_.below(2) == 1;
        EL_node *position = after ? EL_insert_after_index(list(), index, element(value).data())
                                  : EL_insert_before_index(list(), index, element(value).data());
        require((position != nullptr) == selected().is_index(index),
                "inserted at an index that is none, or not at one that is");
        if (position)
            insert(index + after, position, value);
    }

    void forget(const EL_node *position)
    {
        expected_.dealloc(position, node_size());
        note_removal(position);
    }

    void remove()
    {
        if (selected().empty())
            return;
        EL_node *position = any_position();
        forget(position);
        EL_remove_item(list(), position);
    }

    void remove_at_index()
    {
        int32_t index = any_near_index();
        bool present = selected().is_index(index);
        if (present)
            forget(selected().at(index).position);
        require(EL_remove_at_index(list(), index) == present, "remove_at_index returned another result");
    }

    void remove_range()
    {
        std::size_t from, length;
        if (!any_range(from, length))
            return;
        std::vector<EL_node *> doomed;
        for (std::size_t i = 0; i < length; ++i)
            doomed.push_back(around(from + i).position);
        for (EL_node *position : doomed)
            forget(position);
        EL_remove_items_inbetween(list(), doomed.front(), doomed.back());
    }

    void replace()
    {
        if (selected().empty())
            return;
        node &chosen = any_node();
        chosen.value = any_value();
        EL_replace_item(chosen.position, element(chosen.value).data(), static_cast<uint32_t>(element_size));
    }

    void replace_range()
    {
        std::size_t from, length;
        if (!any_range(from, length))
            return;
        std::size_t source = any_list();
        EL_node *first = around(from).position, *last = around(from + length - 1).position;
        std::size_t available = models_[source].nodes.size();
        for (std::size_t i = 0; i < std::min(length, available); ++i)
            around(from + i).value = models_[source].nodes[i].value;
        bool raises = available < length;
        if (raises)
            expected_.raise("egenlist", line_of_short_replacement, MOVA_PRECONDITION_BROKEN);
        returns_from(raises, [&] {
            EL_replace_items_inbetween(list(), first, last, lists_[source], static_cast<uint32_t>(element_size));
        });
    }

    void close_or_open()
    {
        note_closed(bytes_.below(2) == 1);
        selected().closed ? EL_set_closed(list()) : EL_reset_closed(list());
    }

    void advance()
    {
        if (selected().empty())
            return;
        EL_node *position = any_position();
        const int32_t steps = any_steps();
        require(EL_advance(list(), position, steps) == selected().neighbour(position, steps), "advanced elsewhere");
    }

    void look_up()
    {
        int32_t index = any_near_index();
        EL_node *position = selected().is_index(index) ? selected().at(index).position : nullptr;
        require(EL_get_pos_at_index(list(), index) == position, "another position at an index");
        require(EL_get_item_at_index(list(), index) == (position ? EL_element(position) : nullptr), "another element");
        if (position)
            require(EL_get_index(list(), position) == index, "another index");
        require(EL_count_items(list()) == selected().size(), "another count");
    }

    void count_range()
    {
        std::size_t from, length;
        if (!any_range(from, length))
            return;
        int32_t count = EL_count_items_inbetween(list(), around(from).position, around(from + length - 1).position);
        require(count == static_cast<int32_t>(length), "a range of another length");
    }

    void adopt_values(EL_list *made, const std::vector<uint8_t> &values, bool closed)
    {
        list_model adopted;
        adopted.closed = closed;
        EL_node *position = made->first;
        for (uint8_t value : values) {
            adopted.nodes.push_back({position, value});
            position = position->next;
        }
        adopt(made, adopted);
    }

    void total_copy()
    {
        std::vector<uint8_t> values;
        expected_.alloc(sizeof(EL_list));
        for (const node &each : selected().nodes) {
            expected_.alloc(node_size());
            values.push_back(each.value);
        }
        adopt_values(EL_total_copy(list()), values, selected().closed);
    }

    void copy_range()
    {
        std::size_t from, length;
        if (!any_range(from, length))
            return;
        std::vector<uint8_t> values;
        expected_.alloc(sizeof(EL_list));
        for (std::size_t i = 0; i < length; ++i) {
            expected_.alloc(node_size());
            values.push_back(around(from + i).value);
        }
        adopt_values(EL_total_copy_inbetween(list(), around(from).position, around(from + length - 1).position), values,
                     false);
    }

    void join()
    {
        std::size_t source = any_list();
        if (source == selected_ || models_[source].closed || selected().closed)
            return;
        expected_.dealloc(lists_[source], sizeof(EL_list));
        EL_append_list(list(), &lists_[source]);
        note_joined(source);
    }

    void reverse()
    {
        EL_reverse(list());
        std::reverse(selected().nodes.begin(), selected().nodes.end());
    }

    void roll()
    {
        if (selected().empty())
            return;
        EL_node *position = any_position();
        bool raises = !selected().closed && position == selected().nodes.front().position;
        if (raises)
            expected_.raise("egenlist", line_of_roll_to_first, MOVA_PRECONDITION_BROKEN);
        returns_from(raises, [&] { EL_roll(list(), position); });
        if (selected().closed)
            selected().roll_to(position);
    }

    /* On an open list the nodes ahead of the cut would be lost. */
    void cut_open()
    {
        if (selected().empty() || !selected().closed)
            return;
        EL_node *position = any_position();
        expected_.alloc(node_size());
        require(EL_make_open_at_position(list(), position) == position, "another position came back");
        selected().roll_to(position);
        selected().nodes.push_back({list()->last, selected().nodes.front().value});
        selected().closed = false;
    }

    void split()
    {
        if (selected().empty())
            return;
        const std::ptrdiff_t index = any_index();
        EL_node *position = selected().at(index).position;
        expected_.alloc(node_size());
        expected_.alloc(sizeof(EL_list));
        EL_list *end_part = EL_remove_and_get_end_part(list(), position);
        std::vector<uint8_t> values;
        for (std::ptrdiff_t i = index; i < selected().size(); ++i)
            values.push_back(selected().at(i).value);
        selected().nodes.resize(static_cast<std::size_t>(index));
        selected().nodes.push_back({list()->last, values.front()});
        selected().closed = false;
        forget_iterators(selected_);
        adopt_values(end_part, values, false);
    }

    void make_empty()
    {
        expect_release_of_nodes(selected_, node_size());
        EL_make_empty(list());
    }

    void release(std::size_t index) override
    {
        expect_release_of_nodes(index, node_size());
        expected_.dealloc(lists_[index], sizeof(EL_list));
        EL_release(&lists_[index]);
        require(!lists_[index], "release left the variable");
    }

    /* ---- iterators ---- */

    void start_iterator()
    {
        if (!may_start())
            return;
        EL_node *from = any_position_or_null(), *to = any_position_or_null();
        const auto size = static_cast<uint32_t>(element_size);
        const int forward = any_direction();
        switch (bytes_.below(4)) {
        case 0: return start(EL_all_items(list()), {nullptr, first(), last(), 1, size, nullptr});
        case 1: return start(EL_all_items_reversed(list()), {nullptr, last(), first(), 0, size, nullptr});
        case 2:
            return start(EL_all_items_inbetween(list(), from, to, forward),
                         {nullptr, from, to, forward, size, nullptr});
        default:
            return start(EL_tested_items_inbetween(list(), from, to, forward, test_odd),
                         {nullptr, from, to, forward, size, test_odd});
        }
    }

    void step_iterator()
    {
        iterator_pair &pair = any_iterator();
        std::size_t kind = bytes_.below(3);
        if (!pair.alive)
            return;
        const node *reached = nullptr;
        int more = step_model(pair, reached) ? 1 : 0;
        if (kind == 0)
            require_next_position(pair, more, reached);
        else if (kind == 1)
            require_next_item(pair, more, reached);
        else
            require_next_copy(pair, more, reached);
    }

    void require_next_position(iterator_pair &pair, int more, const node *reached)
    {
        EL_node untouched, *position = &untouched;
        require(EL_next_position(&pair.real, &position) == more, "next_position returned another result");
        require(position == (reached ? reached->position : &untouched), "next_position stored another position");
    }

    void require_next_item(iterator_pair &pair, int more, const node *reached)
    {
        void *element = this;
        require(EL_next_item(&pair.real, &element) == more, "next_item returned another result");
        require(element == (reached ? EL_element(reached->position) : this), "next_item stored another element");
    }

    void require_next_copy(iterator_pair &pair, int more, const node *reached)
    {
        element_buffer buffer = element(0xEE), wanted = buffer;
        require(EL_next_item_copy(&pair.real, buffer.data()) == more, "next_item_copy returned another result");
        if (more)
            std::fill_n(wanted.begin(), element_size, reached->value);
        require(buffer == wanted, "next_item_copy left another buffer");
    }
};

[[maybe_unused]] const bool added = add_model<interpreter>("element_list", {400, 2000}, {4000, 40}, {2, 5});

} // namespace

} // namespace mova::test
