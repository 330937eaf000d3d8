/* SPDX-License-Identifier: MIT */
/* Operations on three pointer lists and four iterators, beside a model made of vectors. After every operation the
   result, the list's contents and invariants, every iterator's fields, the callbacks and the host calls are compared. */
#include "list_interpreter.h"
#include "model.h"

#include <mova/lists/generic_list.h>

namespace mova::test {

namespace {

/* Few items, so that lists hold the same pointer more than once. Item 0 is the null pointer. */
constexpr std::size_t item_count = 12;
std::array<char, item_count> item_bytes;

void *item_at(std::size_t index)
{
    return index == 0 ? nullptr : &item_bytes[index];
}

std::size_t index_of(const void *item)
{
    return item ? static_cast<std::size_t>(static_cast<const char *>(item) - item_bytes.data()) : 0;
}

std::string text(const void *item)
{
    return std::to_string(index_of(item));
}

void write_down(const std::string &call)
{
    recording_host::get().write_down(call);
}

/* The callbacks write themselves into the host's log, so that their order among the host calls is compared too. */

bool accepts_odd(const void *item)
{
    return index_of(item) % 2 == 1;
}

int test_odd(void *item)
{
    write_down("test " + text(item));
    return accepts_odd(item) ? -1 : 0;
}

int test_none(void *item)
{
    write_down("test " + text(item));
    return 0;
}

void *copied(void *item)
{
    return item_at((index_of(item) + 1) % item_count);
}

void *copy_item(void *item)
{
    write_down("copy " + text(item));
    return copied(item);
}

void free_item(void **item)
{
    const char *node = reinterpret_cast<const char *>(item) - offsetof(GL_node, item);
    write_down("free item " + text(*item) + " in " + recording_host::get().name_of(node));
    *item = nullptr;
}

int32_t size_of_item(void *item)
{
    return static_cast<int32_t>(index_of(item)) - 3;
}

struct node {
    GL_node *position;
    void *item;
};

class interpreter : public list_interpreter<GL_list, GL_iterator, node> {
public:
    using list_interpreter::list_interpreter;

private:
    using operation = void (interpreter::*)();

    void operate_on_selected() override
    {
        static constexpr operation operations[] = {
            &interpreter::append,
            &interpreter::append,
            &interpreter::prepend,
            &interpreter::prepend,
            &interpreter::insert_before,
            &interpreter::insert_after,
            &interpreter::insert_unique,
            &interpreter::move_to_front,
            &interpreter::remove,
            &interpreter::remove,
            &interpreter::swap_item,
            &interpreter::find,
            &interpreter::join,
            &interpreter::copy,
            &interpreter::total_copy,
            &interpreter::make_empty,
            &interpreter::total_make_empty,
            &interpreter::release_one,
            &interpreter::total_release,
            &interpreter::measure,
            &interpreter::start_iterator,
            &interpreter::start_iterator,
            &interpreter::next_item,
            &interpreter::next_item,
            &interpreter::next_item,
            &interpreter::next_position,
            &interpreter::next_position,
        };
        do_one_of(operations);
    }

    std::string text_of(const node &tested) const override { return text(tested.item); }

    bool accepts(const GL_iterator &iterator, const node &tested) const override
    {
        return iterator.test == test_odd && accepts_odd(tested.item);
    }

    void compare_node(const void *reached, const node &expected) const override
    {
        require(static_cast<const GL_node *>(reached)->item == expected.item, "another item");
    }

    int64_t label_of(const node &each) const override { return static_cast<int64_t>(index_of(each.item)); }
    bool is_small(const node &each) const override { return index_of(each.item) < 2; }

    void *any_item() { return item_at(bytes_.below(item_count, 2)); }

    /* ---- what they must call ---- */

    void expect_release_of_nodes(std::size_t index, bool frees_items)
    {
        for (const node &each : models_[index].nodes) {
            if (frees_items)
                expected_.call("free item " + text(each.item) + " in " + host_.name_of(each.position));
            expected_.dealloc(each.position, sizeof(GL_node));
        }
        note_emptied(index);
    }

    /* ---- operations ---- */

    GL_list *created() override
    {
        expected_.alloc(sizeof(GL_list));
        return GL_create();
    }

    void insert(std::ptrdiff_t index, GL_node *position, void *item)
    {
        expected_.alloc(sizeof(GL_node));
        selected().insert(index, {position, item});
    }

    void append()
    {
        void *item = any_item();
        insert(selected().size(), GL_append_after_last(list(), item), item);
    }

    void prepend()
    {
        void *item = any_item();
        insert(0, GL_insert_before_first(list(), item), item);
    }

    void insert_before()
    {
        if (selected().empty())
            return;
        const std::ptrdiff_t index = any_index();
        void *item = any_item();
        insert(index, GL_insert_before(list(), selected().at(index).position, item), item);
    }

    void insert_after()
    {
        if (selected().empty())
            return;
        const std::ptrdiff_t index = any_index();
        void *item = any_item();
        insert(index + 1, GL_insert_after(list(), selected().at(index).position, item), item);
    }

    void insert_unique()
    {
        void *item = any_item();
        const bool present = position_of(item) != nullptr;
        GL_node *position = GL_insert_unique(list(), item);
        if (present)
            require(!position, "a pointer that was present was inserted");
        else
            insert(selected().size(), position, item);
    }

    void move_to_front()
    {
        if (selected().empty())
            return;
        const auto moved = selected().nodes.begin() + any_index();
        GL_move_before_first(list(), moved->position);
        std::rotate(selected().nodes.begin(), moved, moved + 1);
    }

    void remove()
    {
        if (selected().empty())
            return;
        GL_node *position = any_position();
        expected_.dealloc(position, sizeof(GL_node));
        GL_remove_item(list(), position);
        note_removal(position);
    }

    void swap_item()
    {
        if (selected().empty())
            return;
        node &chosen = any_node();
        void *item = any_item();
        void *given = item;
        GL_swap_item(chosen.position, &given);
        require(given == chosen.item, "swap gave another item back");
        chosen.item = item;
    }

    void find()
    {
        void *item = any_item();
        GL_node *position = reinterpret_cast<GL_node *>(&item);
        const int found = GL_find_item(list(), item, &position);
        require(position == position_of(item), "find gave another position");
        require(found == (position ? 1 : 0), "find returned another result");
    }

    void join()
    {
        const std::size_t source = any_list();
        if (source == selected_)
            return;
        expected_.dealloc(lists_[source], sizeof(GL_list));
        GL_append_list(list(), &lists_[source]);
        note_joined(source);
    }

    void adopt_copy(GL_list *copy, const std::vector<void *> &items)
    {
        list_model nodes;
        for (GL_node *each = copy->first; each; each = each->next)
            nodes.nodes.push_back({each, nodes.nodes.size() < items.size() ? items[nodes.nodes.size()] : nullptr});
        require(nodes.nodes.size() == items.size(), "the copy has another length");
        adopt(copy, nodes);
    }

    void copy()
    {
        std::vector<void *> items;
        expected_.alloc(sizeof(GL_list));
        for (const node &each : selected().nodes) {
            expected_.alloc(sizeof(GL_node));
            items.push_back(each.item);
        }
        adopt_copy(GL_copy(list()), items);
    }

    void total_copy()
    {
        std::vector<void *> items;
        expected_.alloc(sizeof(GL_list));
        for (const node &each : selected().nodes) {
            expected_.call("copy " + text(each.item));
            expected_.alloc(sizeof(GL_node));
            items.push_back(copied(each.item));
        }
        adopt_copy(GL_total_copy(list(), copy_item), items);
    }

    void make_empty()
    {
        expect_release_of_nodes(selected_, false);
        GL_make_empty(list());
    }

    void total_make_empty()
    {
        expect_release_of_nodes(selected_, true);
        GL_total_make_empty(list(), free_item);
    }

    void release(std::size_t index) override
    {
        expect_release_of_nodes(index, false);
        expected_.dealloc(lists_[index], sizeof(GL_list));
        GL_release(&lists_[index]);
        require(!lists_[index], "release left the variable");
    }

    void release_one()
    {
        GL_list *none = nullptr;
        GL_release(&none);
        release_selected();
    }

    void total_release()
    {
        expect_release_of_nodes(selected_, true);
        expected_.dealloc(list(), sizeof(GL_list));
        GL_total_release(&lists_[selected_], free_item);
        require(!list(), "total release left the variable");
        lists_[selected_] = created();
    }

    void measure()
    {
        int32_t bytes = 12;
        for (const node &each : selected().nodes)
            bytes += 12 + size_of_item(each.item);
        require(GL_check(list(), size_of_item) == bytes, "check reports another size");
        require(GL_count_items(list()) == selected().size(), "another count");
    }

    GL_node *position_of(const void *item)
    {
        const auto &nodes = selected().nodes;
        const auto found =
            std::find_if(nodes.begin(), nodes.end(), [&](const node &candidate) { return candidate.item == item; });
        return found == nodes.end() ? nullptr : found->position;
    }

    /* ---- iterators ---- */

    void start_iterator()
    {
        if (!may_start())
            return;
        GL_node *from = any_position_or_null(), *to = any_position_or_null();
        const int forward = any_direction();
        const GL_test test = forward == 1 ? test_none : test_odd;
        switch (bytes_.below(6)) {
        case 0: return start(GL_empty_iter(), {nullptr, nullptr, nullptr, 1, nullptr});
        case 1: return start(GL_all_items(list()), {nullptr, first(), last(), 1, nullptr});
        case 2: return start(GL_all_items_reversed(list()), {nullptr, last(), first(), 0, nullptr});
        case 3: return start(GL_tested_items(list(), test_odd), {nullptr, first(), last(), 1, test_odd});
        case 4: return start(GL_all_items_inbetween(list(), from, to, forward), {nullptr, from, to, forward, nullptr});
        default:
            return start(GL_tested_items_inbetween(list(), from, to, forward, test),
                         {nullptr, from, to, forward, test});
        }
    }

    void next_item()
    {
        iterator_pair &pair = any_iterator();
        if (!pair.alive)
            return;
        const node *reached = nullptr;
        const int more = step_model(pair, reached) ? 1 : 0;
        void *item = this;
        require(GL_next_item(&pair.real, &item) == more, "next_item returned another result");
        require(item == (reached ? reached->item : this), "next_item stored another item");
    }

    void next_position()
    {
        iterator_pair &pair = any_iterator();
        if (!pair.alive)
            return;
        const node *reached = nullptr;
        const int more = step_model(pair, reached) ? 1 : 0;
        GL_node untouched, *position = &untouched;
        require(GL_next_position(&pair.real, &position) == more, "next_position returned another result");
        require(position == (reached ? reached->position : &untouched), "next_position stored another position");
    }
};

[[maybe_unused]] const bool added = add_model<interpreter>("generic_list", {400, 2000}, {4000, 40}, {3, 5});

} // namespace

} // namespace mova::test
