/* Operations on three element lists, open and closed, and four iterators, beside a model made of vectors. After
   every operation the result, the lists' contents and invariants, every iterator's fields, the raises, the tests asked
   and the host calls are compared. */
#include "model.h"
#include "expected_calls.h"

#include <mova/lists/element_list.h>
#include <mova/lists/internal/invariants.h>

#include <array>
#include <cstring>
#include <iterator>

namespace mova::test {

namespace {

/* An element is its size in bytes, all alike; few values, so that elements are equal to each other. */
constexpr std::size_t value_count = 6;
constexpr std::array<std::size_t, 5> sizes = {0, 1, 8, 12, 40};
constexpr int32_t raised_line_of_replace = 557, raised_line_of_roll = 989;

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

struct model_node {
    EL_node *position;
    uint8_t value;
};

struct model_list {
    std::vector<model_node> nodes;
    bool closed = false;

    std::ptrdiff_t size() const { return static_cast<std::ptrdiff_t>(nodes.size()); }
    bool empty() const { return nodes.empty(); }

    std::ptrdiff_t index_of(const EL_node *position) const
    {
        return std::find_if(nodes.begin(), nodes.end(),
                            [&](const model_node &node) { return node.position == position; }) -
               nodes.begin();
    }

    /* The node `steps` further on: around a ring, or null past an open end. */
    EL_node *neighbour(const EL_node *position, std::ptrdiff_t steps) const
    {
        std::ptrdiff_t index = index_of(position) + steps;
        if (closed)
            index = (index % size() + size()) % size();
        return index < 0 || index >= size() ? nullptr : nodes[static_cast<std::size_t>(index)].position;
    }
};

struct iterator_pair {
    EL_iterator real;
    EL_iterator model;
    std::size_t list;
    bool alive;
};

class interpreter {
public:
    explicit interpreter(byte_source bytes) : bytes_(bytes)
    {
        element_size = sizes[bytes_.below(sizes.size())];
        for (EL_list *&list : lists_)
            list = created();
        compare();
    }

    void run()
    {
        while (!bytes_.empty()) {
            operate();
            compare();
        }
        for (std::size_t i = 0; i < lists_.size(); ++i)
            release(i);
        expected_.require_nothing_left();
    }

private:
    using operation = void (interpreter::*)();
    using element_buffer = std::array<uint8_t, sizes.back()>;

    void operate()
    {
        static constexpr operation operations[] = {
            &interpreter::append,         &interpreter::append,          &interpreter::prepend,
            &interpreter::insert_before,  &interpreter::insert_after,    &interpreter::insert_at_index,
            &interpreter::remove,         &interpreter::remove_at_index, &interpreter::remove_range,
            &interpreter::replace,        &interpreter::replace_range,   &interpreter::close_or_open,
            &interpreter::close_or_open,  &interpreter::advance,         &interpreter::look_up,
            &interpreter::count_range,    &interpreter::total_copy,      &interpreter::copy_range,
            &interpreter::join,           &interpreter::reverse,         &interpreter::roll,
            &interpreter::roll,           &interpreter::cut_open,        &interpreter::split,
            &interpreter::make_empty,     &interpreter::release_one,     &interpreter::start_iterator,
            &interpreter::start_iterator, &interpreter::step_iterator,   &interpreter::step_iterator,
            &interpreter::step_iterator,  &interpreter::step_iterator,
        };
        selected_ = bytes_.below(lists_.size());
        (this->*operations[bytes_.below(std::size(operations))])();
    }

    /* ---- what the operations choose ---- */

    EL_list *list() { return lists_[selected_]; }
    model_list &model() { return models_[selected_]; }
    std::size_t node_size() const { return sizeof(EL_node) + element_size; }
    std::size_t any_index() { return bytes_.below(model().nodes.size()); }
    EL_node *any_position() { return model().nodes[any_index()].position; }

    uint8_t any_value() { return element_size ? static_cast<uint8_t>(bytes_.below(value_count)) : uint8_t{0}; }

    static element_buffer element(uint8_t value)
    {
        element_buffer bytes;
        bytes.fill(value);
        return bytes;
    }

    /* A range that its walk ends: `to` ahead of `from`, which on a ring every node is. Indices around the ring. */
    bool any_range(std::size_t &from, std::size_t &length)
    {
        if (model().empty())
            return false;
        from = any_index();
        length = 1 + bytes_.below(model().closed ? model().nodes.size() : model().nodes.size() - from);
        return true;
    }

    model_node &around(std::size_t index) { return model().nodes[index % model().nodes.size()]; }

    /* ---- operations ---- */

    EL_list *created()
    {
        expected_.alloc(sizeof(EL_list));
        return EL_create(static_cast<uint32_t>(element_size));
    }

    void insert(std::size_t index, EL_node *position, uint8_t value)
    {
        expected_.alloc(node_size());
        model().nodes.insert(model().nodes.begin() + static_cast<std::ptrdiff_t>(index), {position, value});
    }

    void append()
    {
        uint8_t value = any_value();
        insert(model().nodes.size(), EL_append_after_last(list(), element(value).data()), value);
    }

    void prepend()
    {
        uint8_t value = any_value();
        insert(0, EL_insert_before_first(list(), element(value).data()), value);
    }

    void insert_before()
    {
        if (model().empty())
            return append();
        std::size_t index = any_index();
        uint8_t value = any_value();
        insert(index, EL_insert_before(list(), model().nodes[index].position, element(value).data()), value);
    }

    void insert_after()
    {
        if (model().empty())
            return append();
        std::size_t index = any_index();
        uint8_t value = any_value();
        insert(index + 1, EL_insert_after(list(), model().nodes[index].position, element(value).data()), value);
    }

    int32_t any_near_index() { return static_cast<int32_t>(bytes_.below(model().nodes.size() + 4)) - 2; }

    bool is_index(int32_t index) { return index >= 0 && index < model().size(); }

    void insert_at_index()
    {
        int32_t index = any_near_index();
        uint8_t value = any_value();
        bool after = bytes_.below(2) == 1;
        EL_node *position = after ? EL_insert_after_index(list(), index, element(value).data())
                                  : EL_insert_before_index(list(), index, element(value).data());
        require((position != nullptr) == is_index(index), "inserted at an index that is none, or not at one that is");
        if (position)
            insert(static_cast<std::size_t>(index) + after, position, value);
    }

    void forget(const EL_node *position)
    {
        expected_.dealloc(position, node_size());
        for (iterator_pair &pair : iterators_) {
            bool ran_past_its_end = pair.list == selected_ && pair.model.end == position && model().closed;
            pair.alive = pair.alive && pair.model.next != position && !ran_past_its_end;
        }
        model().nodes.erase(model().nodes.begin() + model().index_of(position));
    }

    void remove()
    {
        if (model().empty())
            return;
        EL_node *position = any_position();
        forget(position);
        EL_remove_item(list(), position);
    }

    void remove_at_index()
    {
        int32_t index = any_near_index();
        bool present = is_index(index);
        if (present)
            forget(model().nodes[static_cast<std::size_t>(index)].position);
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
        if (model().empty())
            return;
        model_node &node = model().nodes[any_index()];
        node.value = any_value();
        EL_replace_item(node.position, element(node.value).data(), static_cast<uint32_t>(element_size));
    }

    void replace_range()
    {
        std::size_t from, length;
        if (!any_range(from, length))
            return;
        std::size_t source = bytes_.below(lists_.size());
        EL_node *first = around(from).position, *last = around(from + length - 1).position;
        std::size_t available = models_[source].nodes.size();
        for (std::size_t i = 0; i < std::min(length, available); ++i)
            around(from + i).value = models_[source].nodes[i].value;
        bool raises = available < length;
        if (raises)
            expected_.raise("egenlist", raised_line_of_replace, MOVA_PRECONDITION_BROKEN);
        expect_raise(raises, [&] {
            EL_replace_items_inbetween(list(), first, last, lists_[source], static_cast<uint32_t>(element_size));
        });
    }

    /* Runs the call with raises thrown or returned from, by a byte. */
    template <class Call>
    void expect_raise(bool raises, Call call)
    {
        expected_.returns_from(raises, bytes_.below(2) == 1, call);
    }

    /* What closes or opens under an iterator changes what a walk to its end is. */
    void kill_iterators_that_would_not_end()
    {
        for (iterator_pair &pair : iterators_) {
            if (pair.alive && pair.list == selected_ && model().closed && pair.model.next)
                pair.alive = model().index_of(pair.model.end) < model().size();
        }
    }

    void close_or_open()
    {
        model().closed = bytes_.below(2) == 1;
        model().closed ? EL_set_closed(list()) : EL_reset_closed(list());
        kill_iterators_that_would_not_end();
    }

    void advance()
    {
        if (model().empty())
            return;
        EL_node *position = any_position();
        int32_t steps = static_cast<int32_t>(bytes_.below(24)) - 12;
        require(EL_advance(list(), position, steps) == model().neighbour(position, steps), "advanced elsewhere");
    }

    void look_up()
    {
        int32_t index = any_near_index();
        EL_node *position = is_index(index) ? model().nodes[static_cast<std::size_t>(index)].position : nullptr;
        require(EL_get_pos_at_index(list(), index) == position, "another position at an index");
        require(EL_get_item_at_index(list(), index) == (position ? EL_element(position) : nullptr), "another element");
        if (position)
            require(EL_get_index(list(), position) == index, "another index");
        require(EL_count_items(list()) == model().size(), "another count");
    }

    void count_range()
    {
        std::size_t from, length;
        if (!any_range(from, length))
            return;
        int32_t count = EL_count_items_inbetween(list(), around(from).position, around(from + length - 1).position);
        require(count == static_cast<int32_t>(length), "a range of another length");
    }

    /* Puts a list that was made into the place of another than the selected one. */
    void adopt(EL_list *made, const std::vector<uint8_t> &values, bool closed)
    {
        model_list adopted;
        adopted.closed = closed;
        EL_node *node = made->first;
        for (uint8_t value : values) {
            adopted.nodes.push_back({node, value});
            node = node->next;
        }
        std::size_t target = (selected_ + 1) % lists_.size();
        release(target);
        lists_[target] = made;
        models_[target] = adopted;
    }

    void total_copy()
    {
        std::vector<uint8_t> values;
        expected_.alloc(sizeof(EL_list));
        for (const model_node &node : model().nodes) {
            expected_.alloc(node_size());
            values.push_back(node.value);
        }
        adopt(EL_total_copy(list()), values, model().closed);
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
        adopt(EL_total_copy_inbetween(list(), around(from).position, around(from + length - 1).position), values,
              false);
    }

    void join()
    {
        std::size_t source = bytes_.below(lists_.size());
        if (source == selected_ || models_[source].closed || model().closed)
            return;
        expected_.dealloc(lists_[source], sizeof(EL_list));
        EL_append_list(list(), &lists_[source]);
        require(!lists_[source], "the source variable was not cleared");
        model().nodes.insert(model().nodes.end(), models_[source].nodes.begin(), models_[source].nodes.end());
        for (iterator_pair &pair : iterators_)
            pair.list = pair.list == source ? selected_ : pair.list;
        models_[source] = {};
        lists_[source] = created();
    }

    void reverse()
    {
        EL_reverse(list());
        std::reverse(model().nodes.begin(), model().nodes.end());
    }

    void roll()
    {
        if (model().empty())
            return;
        EL_node *position = any_position();
        bool raises = !model().closed && position == model().nodes.front().position;
        if (raises)
            expected_.raise("egenlist", raised_line_of_roll, MOVA_PRECONDITION_BROKEN);
        expect_raise(raises, [&] { EL_roll(list(), position); });
        if (model().closed)
            rotate_model_to(position);
    }

    void rotate_model_to(const EL_node *position)
    {
        auto &nodes = model().nodes;
        std::rotate(nodes.begin(), nodes.begin() + model().index_of(position), nodes.end());
    }

    /* On an open list the nodes ahead of the cut would be lost. */
    void cut_open()
    {
        if (model().empty() || !model().closed)
            return;
        EL_node *position = any_position();
        expected_.alloc(node_size());
        require(EL_make_open_at_position(list(), position) == position, "another position came back");
        rotate_model_to(position);
        model().nodes.push_back({list()->last, model().nodes.front().value});
        model().closed = false;
    }

    void split()
    {
        if (model().empty())
            return;
        std::size_t index = any_index();
        EL_node *position = model().nodes[index].position;
        expected_.alloc(node_size());
        expected_.alloc(sizeof(EL_list));
        EL_list *end_part = EL_remove_and_get_end_part(list(), position);
        std::vector<uint8_t> values;
        for (std::size_t i = index; i < model().nodes.size(); ++i)
            values.push_back(model().nodes[i].value);
        model().nodes.resize(index);
        model().nodes.push_back({list()->last, values.front()});
        model().closed = false;
        forget_iterators(selected_);
        adopt(end_part, values, false);
    }

    void forget_iterators(std::size_t index)
    {
        for (iterator_pair &pair : iterators_)
            pair.alive = pair.alive && pair.list != index;
    }

    void expect_release_of_nodes(std::size_t index)
    {
        for (const model_node &node : models_[index].nodes)
            expected_.dealloc(node.position, node_size());
        models_[index] = {};
        forget_iterators(index);
    }

    void make_empty()
    {
        expect_release_of_nodes(selected_);
        EL_make_empty(list());
    }

    void release(std::size_t index)
    {
        expect_release_of_nodes(index);
        expected_.dealloc(lists_[index], sizeof(EL_list));
        EL_release(&lists_[index]);
        require(!lists_[index], "release left the variable");
    }

    void release_one()
    {
        release(selected_);
        lists_[selected_] = created();
    }

    /* ---- iterators ---- */

    void start_iterator()
    {
        iterator_pair &pair = iterators_[bytes_.below(iterators_.size())];
        EL_node *first = model().empty() ? nullptr : model().nodes.front().position;
        EL_node *last = model().empty() ? nullptr : model().nodes.back().position;
        EL_node *from = model().empty() ? nullptr : any_position();
        EL_node *to = model().empty() ? nullptr : any_position();
        auto size = static_cast<uint32_t>(element_size);
        int forward = static_cast<int>(bytes_.below(3)) - 1;
        pair.list = selected_;
        pair.alive = true;
        switch (bytes_.below(4)) {
        case 0:
            pair.real = EL_all_items(list());
            pair.model = {nullptr, first, last, 1, size, nullptr};
            break;
        case 1:
            pair.real = EL_all_items_reversed(list());
            pair.model = {nullptr, last, first, 0, size, nullptr};
            break;
        case 2:
            pair.real = EL_all_items_inbetween(list(), from, to, forward);
            pair.model = {nullptr, from, to, forward, size, nullptr};
            break;
        default:
            pair.real = EL_tested_items_inbetween(list(), from, to, forward, test_odd);
            pair.model = {nullptr, from, to, forward, size, test_odd};
            break;
        }
    }

    /* One application of the stepping rule to the model; `reached` is the last node that was looked at. */
    bool step_model(iterator_pair &pair, const model_node *&reached)
    {
        EL_iterator &model = pair.model;
        const model_list &nodes = models_[pair.list];
        while (model.next) {
            reached = &nodes.nodes[static_cast<std::size_t>(nodes.index_of(model.next))];
            model.current = model.next;
            model.next = model.current == model.end ? nullptr : nodes.neighbour(model.current, model.forward ? 1 : -1);
            if (!model.test)
                return true;
            expected_.call("test " + std::to_string(reached->value));
            if (accepts_odd(reached->value))
                return true;
        }
        return false;
    }

    void step_iterator()
    {
        iterator_pair &pair = iterators_[bytes_.below(iterators_.size())];
        std::size_t kind = bytes_.below(3);
        if (!pair.alive)
            return;
        const model_node *reached = nullptr;
        int more = step_model(pair, reached) ? 1 : 0;
        if (kind == 0)
            require_next_position(pair, more, reached);
        else if (kind == 1)
            require_next_item(pair, more, reached);
        else
            require_next_copy(pair, more, reached);
    }

    void require_next_position(iterator_pair &pair, int more, const model_node *reached)
    {
        EL_node untouched, *position = &untouched;
        require(EL_next_position(&pair.real, &position) == more, "next_position returned another result");
        require(position == (reached ? reached->position : &untouched), "next_position stored another position");
    }

    void require_next_item(iterator_pair &pair, int more, const model_node *reached)
    {
        void *element = this;
        require(EL_next_item(&pair.real, &element) == more, "next_item returned another result");
        require(element == (reached ? EL_element(reached->position) : this), "next_item stored another element");
    }

    void require_next_copy(iterator_pair &pair, int more, const model_node *reached)
    {
        element_buffer buffer = element(0xEE), wanted = buffer;
        require(EL_next_item_copy(&pair.real, buffer.data()) == more, "next_item_copy returned another result");
        if (more)
            std::fill_n(wanted.begin(), element_size, reached->value);
        require(buffer == wanted, "next_item_copy left another buffer");
    }

    /* ---- comparison ---- */

    void compare()
    {
        for (std::size_t i = 0; i < lists_.size(); ++i)
            compare_list(*lists_[i], models_[i]);
        for (const iterator_pair &pair : iterators_) {
            if (pair.alive)
                compare_iterator(pair.real, pair.model);
        }
        expected_.compare();
    }

    static void compare_list(const EL_list &list, const model_list &model)
    {
        int broken = broken_invariant(list);
        require(broken == 0, "invariant " + std::to_string(broken) + " is broken");
        require(list.count == model.size(), "another number of nodes");
        require(list.closed == (model.closed ? 1 : 0), "another closed flag");
        require(list.element_size == element_size, "another element size");
        EL_node *node = list.first;
        for (const model_node &expected : model.nodes) {
            require(node == expected.position, "another node");
            element_buffer wanted = element(expected.value);
            require(std::memcmp(EL_element(node), wanted.data(), element_size) == 0, "another element");
            node = node->next;
        }
    }

    static void compare_iterator(const EL_iterator &real, const EL_iterator &model)
    {
        require(real.current == model.current, "iterator: another current");
        require(real.next == model.next, "iterator: another next");
        require(real.end == model.end, "iterator: another end");
        require(real.forward == model.forward, "iterator: another direction");
        require(real.element_size == model.element_size, "iterator: another element size");
        require(real.test == model.test, "iterator: another test");
    }

    byte_source bytes_;
    recording_host &host_ = recording_host::get();
    expected_calls expected_;
    std::array<EL_list *, 3> lists_{};
    std::array<model_list, 3> models_;
    std::array<iterator_pair, 4> iterators_{};
    std::size_t selected_ = 0;
};

[[maybe_unused]] const bool added = add_model({.family = "element_list",
                                               .run = run_interpreter<interpreter>,
                                               .long_runs = {400, 2000},
                                               .short_runs = {4000, 40}});

} // namespace

} // namespace mova::test
