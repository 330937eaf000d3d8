/* SPDX-License-Identifier: MIT */
/* Operations on three double lists, open and closed, and four iterators, beside a model made of vectors. After every
   operation the result, the lists' contents to the bit and their invariants, every iterator's fields, the raises and the
   host calls are compared. */
#include "list_interpreter.h"
#include "model.h"

#include <mova/lists/double_list.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace mova::test {

namespace {

/* Few, so that values are equal or near to each other. */
constexpr double values[] = {-3.5, -1, -0.0, 0.0, 0.25, 1, 1.125, 2, 40, std::numeric_limits<double>::quiet_NaN()};
constexpr double tolerances[] = {0, 0.125, 0.25, 1.5};

constexpr std::size_t node_size = sizeof(EL_node) + sizeof(double);

struct node {
    EL_node *position;
    double value;
};

bool is_nan(const node &tested)
{
    return std::isnan(tested.value);
}

bool is_less(const node &a, const node &b)
{
    return a.value < b.value;
}

/* Zeroes differ by their signs, and a NaN is like itself. */
bool are_same(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

class interpreter : public list_interpreter<DBLL_list, EL_iterator, node> {
public:
    using list_interpreter::list_interpreter;

private:
    using operation = void (interpreter::*)();

    void operate_on_selected() override
    {
        static constexpr operation operations[] = {
            &interpreter::add,
            &interpreter::add,
            &interpreter::insert_beside,
            &interpreter::insert_beside,
            &interpreter::insert_at_index,
            &interpreter::add_unique,
            &interpreter::add_unique,
            &interpreter::add_unique,
            &interpreter::remove,
            &interpreter::remove_at_index,
            &interpreter::remove_near_ones,
            &interpreter::replace,
            &interpreter::replace_range,
            &interpreter::set_ends,
            &interpreter::add_to_all,
            &interpreter::find_nearest,
            &interpreter::sort,
            &interpreter::sort,
            &interpreter::close_or_open,
            &interpreter::advance,
            &interpreter::measure,
            &interpreter::copy,
            &interpreter::copy_range,
            &interpreter::reverse,
            &interpreter::roll,
            &interpreter::make_empty,
            &interpreter::release_selected,
            &interpreter::start_iterator,
            &interpreter::step_iterator,
            &interpreter::step_iterator,
            &interpreter::step_iterator,
        };
        do_one_of(operations);
    }

    std::string text_of(const node &tested) const override { return std::to_string(tested.value); }
    bool accepts(const EL_iterator &, const node &) const override { return true; }

    void compare_node(const void *reached, const node &expected) const override
    {
        double value;
        std::memcpy(&value, static_cast<const EL_node *>(reached) + 1, sizeof value);
        require(are_same(value, expected.value), "another value");
    }

    /* Of the few values, two are near to each other. */
    double any_value() { return values[bytes_.between(0, std::size(values) - 1, 4, 6)]; }
    double any_tolerance() { return tolerances[bytes_.below(std::size(tolerances), 3)]; }

    int64_t label_of(const node &each) const override { return static_cast<int64_t>(each.value * 8); }
    bool is_small(const node &each) const override
    {
        return each.value == values[4] || each.value == values[5] || each.value == values[6];
    }

    /* ---- operations ---- */

    DBLL_list *created() override
    {
        expected_.alloc(sizeof(DBLL_list));
        return DBLL_create();
    }

    void insert(std::ptrdiff_t index, EL_node *position, double value)
    {
        expected_.alloc(node_size);
        selected().insert(index, {position, value});
    }

    void add()
    {
        const double value = any_value();
        insert(selected().size(), DBLL_add_double(list(), value), value);
    }

    void insert_beside()
    {
        if (selected().empty())
            return add();
        const std::ptrdiff_t index = any_index();
        const double value = any_value();
        EL_node *position = selected().at(index).position;
        if (bytes_.below(2) == 1)
            insert(index + 1, DBLL_insert_after(list(), position, value), value);
        else
            insert(index, DBLL_insert_before(list(), position, value), value);
    }

    void insert_at_index()
    {
        const int32_t index = any_near_index();
        const double value = any_value();
        const bool after = bytes_.below(2) == 1;
        EL_node *position =
            after ? DBLL_insert_after_index(list(), index, value) : DBLL_insert_before_index(list(), index, value);
        require((position != nullptr) == selected().is_index(index), "inserted, or did not, at such an index");
        if (position)
            insert(index + after, position, value);
    }

    bool is_nearer_to_end(double value)
    {
        const auto &nodes = selected().nodes;
        return selected().size() >= 9 && std::fabs(value - nodes.back().value) < std::fabs(value - nodes.front().value);
    }

    /* The list must be open and ascending. */
    void add_unique()
    {
        const auto &nodes = selected().nodes;
        if (selected().closed || std::any_of(nodes.begin(), nodes.end(), is_nan))
            return;
        sort();
        const double tolerance = any_tolerance();
        const double value = !nodes.empty() && bytes_.below(4) == 0 ? nodes.back().value + 2 : any_value();
        if (std::isnan(value))
            return;
        const bool has_near_one = std::any_of(
            nodes.begin(), nodes.end(), [&](const node &each) { return std::fabs(each.value - value) <= tolerance; });
        const auto place = std::lower_bound(nodes.begin(), nodes.end(), node{nullptr, value}, is_less) - nodes.begin();
        const bool beside_a_node = place < selected().size() || is_nearer_to_end(value);
        const int result = DBLL_add_double_unique(list(), value, tolerance);
        require(result == (!has_near_one && beside_a_node), "add_double_unique returned another result");
        if (!has_near_one)
            insert(place, nth_position(place), value);
    }

    /* Found by its links: the model does not have it yet. */
    EL_node *nth_position(std::ptrdiff_t index)
    {
        EL_node *position = list()->first;
        for (; position && index > 0; --index)
            position = position->next;
        require(position, "too few nodes");
        return position;
    }

    void forget(const EL_node *position)
    {
        expected_.dealloc(position, node_size);
        note_removal(position);
    }

    void remove()
    {
        if (selected().empty())
            return;
        EL_node *position = any_position();
        forget(position);
        DBLL_remove_double(list(), position);
    }

    void remove_at_index()
    {
        const int32_t index = any_near_index();
        const bool present = selected().is_index(index);
        if (present)
            forget(selected().at(index).position);
        require(DBLL_remove_at_index(list(), index) == present, "remove_at_index returned another result");
    }

    /* The values move, the positions stay. A NaN is a wall. */
    void sort_model()
    {
        std::vector<node> sorted = selected().nodes;
        for (auto begin = sorted.begin(); begin != sorted.end();) {
            const auto end = std::find_if(begin, sorted.end(), is_nan);
            sort_stably(begin, end, is_less);
            begin = std::find_if_not(end, sorted.end(), is_nan);
        }
        for (std::size_t i = 0; i < sorted.size(); ++i)
            selected().nodes[i].value = sorted[i].value;
    }

    void sort()
    {
        sort_model();
        DBLL_sort(list());
    }

    /* Those that are nearer than `tolerance` to the last one that was kept. For the last of the list, which stays, the
       one kept before it goes, unless it is the first. */
    std::vector<EL_node *> near_ones(double tolerance)
    {
        const auto &nodes = selected().nodes;
        std::vector<EL_node *> found;
        std::size_t kept = 0;
        for (std::size_t i = 1; i < nodes.size(); ++i) {
            if (!(std::fabs(nodes[i].value - nodes[kept].value) < tolerance))
                kept = i;
            else if (i + 1 < nodes.size())
                found.push_back(nodes[i].position);
            else if (kept > 0)
                found.push_back(nodes[kept].position);
        }
        return found;
    }

    void remove_near_ones()
    {
        const double tolerance = any_tolerance();
        sort_model();
        for (EL_node *position : near_ones(tolerance))
            forget(position);
        DBLL_remove_double_occ(list(), tolerance);
    }

    void replace()
    {
        if (selected().empty())
            return;
        node &chosen = any_node();
        chosen.value = any_value();
        DBLL_replace_double(chosen.position, chosen.value);
    }

    void replace_range()
    {
        std::size_t from, length;
        if (!any_range(from, length))
            return;
        const std::size_t source = any_list();
        EL_node *begin = around(from).position, *end = around(from + length - 1).position;
        const std::size_t available = models_[source].nodes.size();
        for (std::size_t i = 0; i < std::min(length, available); ++i)
            around(from + i).value = models_[source].nodes[i].value;
        const bool raises = available < length;
        if (raises)
            expected_.raise("egenlist", line_of_short_replacement, MOVA_PRECONDITION_BROKEN);
        returns_from(raises, [&] { DBLL_replace_doubles_inbetween(list(), begin, end, lists_[source]); });
    }

    void set_ends()
    {
        const double value = any_value();
        const bool at_the_end = bytes_.below(2) == 1;
        at_the_end ? DBLL_set_end_value(list(), value) : DBLL_set_begin_value(list(), value);
        if (!selected().empty())
            (at_the_end ? selected().nodes.back() : selected().nodes.front()).value = value;
    }

    void add_to_all()
    {
        const double offset = bytes_.below(2) == 1 ? 0.25 : -0.25;
        for (node &each : selected().nodes)
            each.value += offset;
        DBLL_add_to_all(list(), offset);
    }

    void find_nearest()
    {
        const double value = any_value(), distance = any_tolerance();
        double nearest = 2 * distance;
        int32_t index = -1;
        for (std::ptrdiff_t i = 0; i < selected().size(); ++i) {
            const double candidate = std::fabs(selected().at(i).value - value);
            if (candidate < nearest) {
                nearest = candidate;
                index = static_cast<int32_t>(i);
            }
        }
        double stored = -1;
        require(DBLL_find_index_of_nearest(list(), value, distance, &stored) == index, "another index of the nearest");
        require(are_same(stored, nearest), "another distance to the nearest");
    }

    void close_or_open()
    {
        note_closed(bytes_.below(2) == 1);
        selected().closed ? DBLL_set_closed(list()) : DBLL_reset_closed(list());
    }

    void advance()
    {
        if (selected().empty())
            return;
        EL_node *position = any_position();
        const int32_t steps = any_steps();
        require(DBLL_advance(list(), position, steps) == selected().neighbour(position, steps), "advanced elsewhere");
    }

    void measure()
    {
        require(DBLL_size(list()) == selected().size(), "another size");
        require(DBLL_check(list()) == 16 * selected().size(), "check reports another size");
        require(DBLL_is_empty(list()) == selected().empty(), "is_empty returned another result");
        const double front = selected().empty() ? 0 : selected().nodes.front().value;
        const double back = selected().empty() ? 0 : selected().nodes.back().value;
        require(are_same(DBLL_begin_value(list()), front), "another first value");
        require(are_same(DBLL_end_value(list()), back), "another last value");
        std::size_t from, length;
        if (any_range(from, length)) {
            EL_node *begin = around(from).position, *end = around(from + length - 1).position;
            require(DBLL_size_inbetween(list(), begin, end) == static_cast<int32_t>(length), "another size of a range");
        }
    }

    /* Puts a new list of these values into the place of another. */
    void adopt_values(DBLL_list *made, const std::vector<double> &taken, bool closed)
    {
        list_model adopted;
        adopted.closed = closed;
        EL_node *position = made->first;
        for (double value : taken) {
            require(position, "too few nodes");
            adopted.nodes.push_back({position, value});
            position = position->next;
        }
        adopt(made, adopted);
    }

    void expect_new_list(std::size_t size)
    {
        expected_.alloc(sizeof(DBLL_list));
        for (std::size_t i = 0; i < size; ++i)
            expected_.alloc(node_size);
    }

    void copy()
    {
        std::vector<double> taken;
        for (const node &each : selected().nodes)
            taken.push_back(each.value);
        expect_new_list(taken.size());
        adopt_values(DBLL_copy(list()), taken, selected().closed);
    }

    void copy_range()
    {
        std::size_t from, length;
        if (!any_range(from, length))
            return create_with_two();
        std::vector<double> taken;
        for (std::size_t i = 0; i < length; ++i)
            taken.push_back(around(from + i).value);
        EL_node *begin = around(from).position, *end = around(from + length - 1).position;
        expect_new_list(length);
        adopt_values(DBLL_copy_inbetween(list(), begin, end), taken, false);
    }

    void create_with_two()
    {
        const double one = any_value(), other = any_value();
        expect_new_list(2);
        adopt_values(DBLL_create_with_two(one, other), {one, other}, false);
    }

    void reverse()
    {
        DBLL_reverse(list());
        std::reverse(selected().nodes.begin(), selected().nodes.end());
    }

    void roll()
    {
        if (selected().empty())
            return;
        EL_node *position = any_position();
        const bool raises = !selected().closed && position == first();
        if (raises)
            expected_.raise("egenlist", line_of_roll_to_first, MOVA_PRECONDITION_BROKEN);
        returns_from(raises, [&] { DBLL_roll(list(), position); });
        if (selected().closed)
            selected().roll_to(position);
    }

    void make_empty()
    {
        expect_release_of_nodes(selected_, node_size);
        DBLL_make_empty(list());
    }

    void release(std::size_t index) override
    {
        expect_release_of_nodes(index, node_size);
        expected_.dealloc(lists_[index], sizeof(DBLL_list));
        DBLL_release(&lists_[index]);
        require(!lists_[index], "release left the variable");
    }

    /* ---- iterators ---- */

    void start_iterator()
    {
        if (!may_start())
            return;
        EL_node *from = any_position_or_null(), *to = any_position_or_null();
        constexpr uint32_t size = sizeof(double);
        switch (bytes_.below(4)) {
        case 0: return start(DBLL_all_doubles(list()), {nullptr, first(), last(), 1, size, nullptr});
        case 1: return start(DBLL_all_doubles_reversed(list()), {nullptr, last(), first(), 0, size, nullptr});
        case 2: return start(DBLL_all_doubles_inbetween(list(), from, to), {nullptr, from, to, 1, size, nullptr});
        default:
            return start(DBLL_all_doubles_inbetween_reversed(list(), from, to), {nullptr, from, to, 0, size, nullptr});
        }
    }

    void step_iterator()
    {
        iterator_pair &pair = any_iterator();
        if (!pair.alive)
            return;
        const node *reached = nullptr;
        const int more = step_model(pair, reached) ? 1 : 0;
        if (bytes_.below(2) == 1) {
            EL_node untouched, *position = &untouched;
            require(DBLL_next_position(&pair.real, &position) == more, "next_position returned another result");
            require(position == (more ? reached->position : &untouched), "next_position stored another position");
        } else {
            double value = 77;
            require(DBLL_next_double(&pair.real, &value) == more, "next_double returned another result");
            require(are_same(value, more ? reached->value : 77), "next_double stored another value");
        }
    }
};

[[maybe_unused]] const bool added = add_model<interpreter>("double_list", {200, 2000}, {2000, 40}, {2, 5});

} // namespace

} // namespace mova::test
