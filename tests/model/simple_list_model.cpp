/* SPDX-License-Identifier: MIT */
/* Operations on three simple lists, open and closed, and four iterators, beside a model made of vectors. After
   every operation the result, the lists' contents and invariants, the links of items that are on no list, every
   iterator's fields, the raises, the callbacks and the host calls are compared. */
#include "list_interpreter.h"
#include "model.h"

#include <mova/lists/simple_list.h>

#include <deque>

namespace mova::test {

namespace {

constexpr int32_t raised_line_of_release = 75, raised_line_of_roll = 743;

/* A caller's record: the links, and what is the caller's own. */
struct item {
    item *prev, *next;
    int number;
};

item *item_of(void *pointer)
{
    return static_cast<item *>(pointer);
}

std::string number_of(void *pointer)
{
    return std::to_string(item_of(pointer)->number);
}

void write_down(const std::string &call)
{
    recording_host::get().write_down(call);
}

int test_odd(void *pointer)
{
    write_down("test " + number_of(pointer));
    return item_of(pointer)->number % 2 ? -1 : 0;
}

/* As a callback that frees the item: the links are gone, and so is the caller's variable. */
void free_item(void **variable)
{
    write_down("free " + number_of(*variable));
    item_of(*variable)->prev = item_of(*variable)->next = nullptr;
    *variable = nullptr;
}

/* Where copies come from. */
std::vector<item *> *spare_items;

void *copy_item(void *pointer)
{
    write_down("copy " + number_of(pointer));
    item *copy = spare_items->back();
    spare_items->pop_back();
    return copy;
}

int32_t size_of_item(void *pointer)
{
    return item_of(pointer)->number - 20;
}

struct node {
    item *position;
};

class interpreter : public list_interpreter<SL_list, SL_iterator, node> {
public:
    explicit interpreter(byte_source bytes) : list_interpreter(bytes)
    {
        for (int number = 0; number < 60; ++number)
            records_.push_back({nullptr, nullptr, number});
        for (item &record : records_)
            free_.push_back(&record);
        spare_items = &free_;
    }

private:
    using operation = void (interpreter::*)();

    void operate_on_selected() override
    {
        static constexpr operation operations[] = {
            &interpreter::append,
            &interpreter::append,
            &interpreter::prepend,
            &interpreter::insert_before,
            &interpreter::insert_after,
            &interpreter::insert_at_index,
            &interpreter::insert_unique,
            &interpreter::remove,
            &interpreter::remove,
            &interpreter::remove_at_index,
            &interpreter::close_or_open,
            &interpreter::close_or_open,
            &interpreter::advance,
            &interpreter::look_up,
            &interpreter::measure,
            &interpreter::total_copy,
            &interpreter::join,
            &interpreter::reverse,
            &interpreter::roll,
            &interpreter::roll,
            &interpreter::make_empty,
            &interpreter::release_one,
            &interpreter::release_selected,
            &interpreter::start_iterator,
            &interpreter::start_iterator,
            &interpreter::step_iterator,
            &interpreter::step_iterator,
            &interpreter::step_iterator,
        };
        do_one_of(operations);
    }

    std::string text_of(const node &tested) const override { return number_of(tested.position); }
    bool accepts(const SL_iterator &, const node &tested) const override { return tested.position->number % 2 == 1; }
    void compare_node(const void *, const node &) const override {}

    /* Runs `use` with an item that is on no list, where one is left. */
    template <class Use>
    void with_free_item(Use use)
    {
        if (free_.empty())
            return;
        use(bytes_.is_exhaustive() ? first_free_item(bytes_.below(2)) : free_[bytes_.below(free_.size())]);
    }

    /* Of items that are odd, or even, one is as good as another. */
    item *first_free_item(std::size_t parity) const
    {
        return *std::ranges::find_if(free_, [parity](const item *each) { return each->number % 2 == int(parity); });
    }

    int64_t label_of(const node &each) const override { return each.position->number % 2; }
    bool is_small(const node &) const override { return true; }

    void note_insertion(std::ptrdiff_t index, item *inserted)
    {
        std::erase(free_, inserted);
        selected().insert(index, {inserted});
    }

    SL_list *created() override
    {
        expected_.alloc(sizeof(SL_list));
        return SL_create();
    }

    void append()
    {
        with_free_item([&](item *chosen) {
            SL_append_after_last(list(), chosen);
            note_insertion(selected().size(), chosen);
        });
    }

    void prepend()
    {
        with_free_item([&](item *chosen) {
            SL_insert_before_first(list(), chosen);
            note_insertion(0, chosen);
        });
    }

    void insert_before()
    {
        if (selected().empty())
            return append();
        with_free_item([&](item *chosen) {
            item *position = any_position();
            SL_insert_before(list(), position, chosen);
            note_insertion(selected().index_of(position), chosen);
        });
    }

    void insert_after()
    {
        if (selected().empty())
            return append();
        with_free_item([&](item *chosen) {
            item *position = any_position();
            SL_insert_after(list(), position, chosen);
            note_insertion(selected().index_of(position) + 1, chosen);
        });
    }

    void insert_at_index()
    {
        with_free_item([&](item *chosen) {
            int32_t index = any_near_index();
            bool after = bytes_.below(2) == 1;
            int inserted =
                after ? SL_insert_after_index(list(), index, chosen) : SL_insert_before_index(list(), index, chosen);
            require(inserted == selected().is_index(index), "insertion at an index returned another result");
            if (inserted)
                note_insertion(index + after, chosen);
        });
    }

    /* On a ring that does not hold the item this does not end. */
    void insert_unique()
    {
        if (!selected().empty() && bytes_.below(2) == 0)
            return SL_insert_unique(list(), any_position());
        if (selected().closed && !selected().empty())
            return;
        with_free_item([&](item *chosen) {
            SL_insert_unique(list(), chosen);
            note_insertion(selected().size(), chosen);
        });
    }

    void free_removed(item *removed)
    {
        note_removal(removed);
        free_.push_back(removed);
    }

    void remove()
    {
        if (selected().empty())
            return;
        item *removed = any_position();
        SL_remove_item(list(), removed);
        free_removed(removed);
    }

    void remove_at_index()
    {
        int32_t index = any_near_index();
        item *removed = selected().is_index(index) ? selected().at(index).position : nullptr;
        require(SL_remove_at_index(list(), index) == (removed ? 1 : 0), "remove_at_index returned another result");
        if (removed)
            free_removed(removed);
    }

    void close_or_open()
    {
        note_closed(bytes_.below(2) == 1);
        selected().closed ? SL_set_closed(list()) : SL_reset_closed(list());
    }

    void advance()
    {
        if (selected().empty())
            return;
        item *from = any_position();
        const int32_t steps = any_steps();
        require(SL_advance(list(), from, steps) == selected().neighbour(from, steps), "advanced elsewhere");
    }

    void look_up()
    {
        int32_t index = any_near_index();
        item *sought = selected().is_index(index) ? selected().at(index).position : nullptr;
        require(SL_pos_at_index(list(), index) == sought, "another item at an index");
        if (sought)
            require(SL_get_index(list(), sought) == index, "another index");
        require(SL_count_items(list()) == selected().size(), "another count");
    }

    void measure()
    {
        int32_t bytes = 16;
        for (const node &each : selected().nodes)
            bytes += size_of_item(each.position);
        require(SL_check(list(), size_of_item) == bytes, "check reports another size");
    }

    void total_copy()
    {
        if (free_.size() < selected().nodes.size())
            return;
        list_model copy;
        copy.closed = selected().closed;
        expected_.alloc(sizeof(SL_list));
        for (const node &each : selected().nodes) {
            expected_.call("copy " + text_of(each));
            copy.nodes.push_back({free_[free_.size() - 1 - copy.nodes.size()]});
        }
        adopt(SL_total_copy(list(), copy_item), copy);
    }

    void join()
    {
        const std::size_t source = any_list();
        if (source == selected_ || selected().closed || models_[source].closed)
            return;
        expected_.dealloc(lists_[source], sizeof(SL_list));
        SL_append_list(list(), &lists_[source]);
        note_joined(source);
    }

    void reverse()
    {
        SL_reverse(list());
        std::reverse(selected().nodes.begin(), selected().nodes.end());
    }

    void roll()
    {
        const bool to_lone_item = !free_.empty() && bytes_.below(4) == 0;
        if (!to_lone_item && selected().empty())
            return;
        item *chosen = to_lone_item ? free_.back() : any_position();
        const bool raises = to_lone_item && selected().closed;
        if (raises)
            expected_.raise("sgenlist", raised_line_of_roll, MOVA_PRECONDITION_BROKEN);
        expected_.returns_from(raises, true, [&] { SL_roll(list(), chosen); });
        if (selected().closed && !raises)
            selected().roll_to(chosen);
    }

    void expect_free_of_items(std::size_t index)
    {
        for (const node &each : models_[index].nodes) {
            expected_.call("free " + text_of(each));
            free_.push_back(each.position);
        }
        note_emptied(index);
    }

    void make_empty()
    {
        expect_free_of_items(selected_);
        SL_make_empty(list(), free_item);
    }

    void release(std::size_t index) override
    {
        expect_free_of_items(index);
        expected_.dealloc(lists_[index], sizeof(SL_list));
        SL_total_release(&lists_[index], free_item);
        require(!lists_[index], "total release left the variable");
    }

    /* A list with items raises and stays, where the raise throws. */
    void release_one()
    {
        const bool raises = !selected().empty();
        if (raises)
            expected_.raise("sgenlist", raised_line_of_release, MOVA_PRECONDITION_BROKEN);
        else
            expected_.dealloc(list(), sizeof(SL_list));
        if (expected_.returns_from(raises, true, [&] { SL_release(&lists_[selected_]); })) {
            require(!list(), "release left the variable");
            models_[selected_] = {};
            lists_[selected_] = created();
        }
    }

    void start_iterator()
    {
        if (!may_start())
            return;
        item *from = any_position_or_null(), *to = any_position_or_null();
        const int forward = any_direction();
        switch (bytes_.below(7)) {
        case 0: return start(SL_empty_iter(), {nullptr, nullptr, nullptr, 1, 0, nullptr});
        case 1: return start(SL_all_items(list()), {nullptr, first(), last(), 1, 0, nullptr});
        case 2: return start(SL_all_items_reversed(list()), {nullptr, last(), first(), 0, 0, nullptr});
        case 3: return start(SL_tested_items(list(), test_odd), {nullptr, first(), last(), 1, 0, test_odd});
        case 4: return start(SL_tested_items_reversed(list(), test_odd), {nullptr, last(), first(), 0, 0, test_odd});
        case 5:
            return start(SL_all_items_inbetween(list(), from, to, forward), {nullptr, from, to, forward, 0, nullptr});
        default:
            return start(SL_tested_items_inbetween(list(), from, to, forward, test_odd),
                         {nullptr, from, to, forward, 0, test_odd});
        }
    }

    void step_iterator()
    {
        iterator_pair &pair = any_iterator();
        if (!pair.alive)
            return;
        const node *reached = nullptr;
        const bool more = step_model(pair, reached);
        void *delivered = this;
        require(SL_next_item(&pair.real, &delivered) == (more ? 1 : 0), "next_item returned another result");
        require(delivered == (more ? static_cast<void *>(reached->position) : this), "next_item stored another item");
    }

    void compare() override
    {
        list_interpreter::compare();
        for (const item *each : free_)
            require(!each->prev && !each->next, "an item on no list has links");
    }

    std::deque<item> records_;
    std::vector<item *> free_;
};

[[maybe_unused]] const bool added = add_model<interpreter>("simple_list", {400, 2000}, {4000, 40}, {2, 5});

} // namespace

} // namespace mova::test
