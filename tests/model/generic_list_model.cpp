/* Operations on three pointer lists and four iterators, beside a model made of vectors. After every operation the
   result, the list's contents and invariants, every iterator's fields, the callbacks and the host calls are compared.
   */
#include "expected_calls.h"
#include "model.h"

#include <tests/support/byte_source.h>
#include <tests/support/recording_host.h>

#include <mova/lists/generic_list.h>
#include <mova/lists/internal/invariants.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <string>
#include <vector>

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

struct model_node {
    GL_node *position;
    void *item;
};

using model_list = std::vector<model_node>;

struct iterator_pair {
    GL_iterator real;
    GL_iterator model;
    std::size_t list;
    bool alive;
};

class interpreter {
public:
    explicit interpreter(byte_source bytes) : bytes_(bytes)
    {
        for (GL_list *&list : lists_)
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

    void operate()
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
            &interpreter::swap,
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
        selected_ = bytes_.below(lists_.size());
        (this->*operations[bytes_.below(std::size(operations))])();
    }

    /* ---- what the operations choose ---- */

    GL_list *list() { return lists_[selected_]; }
    model_list &model() { return models_[selected_]; }
    void *any_item() { return item_at(bytes_.below(item_count)); }
    std::size_t any_index() { return bytes_.below(model().size()); }

    /* ---- what they must call ---- */

    void expect_release_of_nodes(const model_list &nodes, bool frees_items)
    {
        for (const model_node &node : nodes) {
            if (frees_items)
                expected_.call("free item " + text(node.item) + " in " + host_.name_of(node.position));
            expected_.dealloc(node.position, sizeof(GL_node));
        }
    }

    /* ---- operations ---- */

    GL_list *created()
    {
        expected_.alloc(sizeof(GL_list));
        return GL_create();
    }

    void insert(std::size_t index, GL_node *position, void *item)
    {
        expected_.alloc(sizeof(GL_node));
        model().insert(model().begin() + static_cast<std::ptrdiff_t>(index), {position, item});
    }

    void append()
    {
        void *item = any_item();
        insert(model().size(), GL_append_after_last(list(), item), item);
    }

    void prepend()
    {
        void *item = any_item();
        insert(0, GL_insert_before_first(list(), item), item);
    }

    void insert_before()
    {
        if (model().empty())
            return;
        std::size_t index = any_index();
        void *item = any_item();
        insert(index, GL_insert_before(list(), model()[index].position, item), item);
    }

    void insert_after()
    {
        if (model().empty())
            return;
        std::size_t index = any_index();
        void *item = any_item();
        insert(index + 1, GL_insert_after(list(), model()[index].position, item), item);
    }

    void insert_unique()
    {
        void *item = any_item();
        bool present = position_of(item) != nullptr;
        GL_node *position = GL_insert_unique(list(), item);
        if (present)
            require(!position, "a pointer that was present was inserted");
        else
            insert(model().size(), position, item);
    }

    void move_to_front()
    {
        if (model().empty())
            return;
        auto node = model().begin() + static_cast<std::ptrdiff_t>(any_index());
        GL_move_before_first(list(), node->position);
        std::rotate(model().begin(), node, node + 1);
    }

    void remove()
    {
        if (model().empty())
            return;
        auto node = model().begin() + static_cast<std::ptrdiff_t>(any_index());
        expected_.dealloc(node->position, sizeof(GL_node));
        for (iterator_pair &pair : iterators_)
            pair.alive = pair.alive && pair.model.next != node->position;
        GL_remove_item(list(), node->position);
        model().erase(node);
    }

    void swap()
    {
        if (model().empty())
            return;
        model_node &node = model()[any_index()];
        void *item = any_item();
        void *given = item;
        GL_swap_item(node.position, &given);
        require(given == node.item, "swap gave another item back");
        node.item = item;
    }

    void find()
    {
        void *item = any_item();
        GL_node *position = reinterpret_cast<GL_node *>(&item);
        int found = GL_find_item(list(), item, &position);
        require(position == position_of(item), "find gave another position");
        require(found == (position ? 1 : 0), "find returned another result");
    }

    void join()
    {
        std::size_t source = bytes_.below(lists_.size());
        if (source == selected_)
            return;
        expected_.dealloc(lists_[source], sizeof(GL_list));
        GL_append_list(list(), &lists_[source]);
        require(!lists_[source], "the source variable was not cleared");
        model().insert(model().end(), models_[source].begin(), models_[source].end());
        for (iterator_pair &pair : iterators_)
            pair.list = pair.list == source ? selected_ : pair.list;
        models_[source].clear();
        lists_[source] = created();
    }

    /* Puts a copy into the place of another list. */
    void adopt_copy(GL_list *copy, const std::vector<void *> &items)
    {
        model_list nodes;
        for (GL_node *node = copy->first; node; node = node->next)
            nodes.push_back({node, nodes.size() < items.size() ? items[nodes.size()] : nullptr});
        require(nodes.size() == items.size(), "the copy has another length");
        std::size_t target = (selected_ + 1) % lists_.size();
        release(target);
        lists_[target] = copy;
        models_[target] = nodes;
    }

    void copy()
    {
        std::vector<void *> items;
        expected_.alloc(sizeof(GL_list));
        for (const model_node &node : model()) {
            expected_.alloc(sizeof(GL_node));
            items.push_back(node.item);
        }
        adopt_copy(GL_copy(list()), items);
    }

    void total_copy()
    {
        std::vector<void *> items;
        expected_.alloc(sizeof(GL_list));
        for (const model_node &node : model()) {
            expected_.call("copy " + text(node.item));
            expected_.alloc(sizeof(GL_node));
            items.push_back(copied(node.item));
        }
        adopt_copy(GL_total_copy(list(), copy_item), items);
    }

    void forget_nodes(std::size_t index)
    {
        models_[index].clear();
        for (iterator_pair &pair : iterators_)
            pair.alive = pair.alive && pair.list != index;
    }

    void make_empty()
    {
        expect_release_of_nodes(model(), false);
        GL_make_empty(list());
        forget_nodes(selected_);
    }

    void total_make_empty()
    {
        expect_release_of_nodes(model(), true);
        GL_total_make_empty(list(), free_item);
        forget_nodes(selected_);
    }

    void release(std::size_t index)
    {
        expect_release_of_nodes(models_[index], false);
        expected_.dealloc(lists_[index], sizeof(GL_list));
        GL_release(&lists_[index]);
        require(!lists_[index], "release left the variable");
        forget_nodes(index);
    }

    void release_one()
    {
        release(selected_);
        GL_release(&lists_[selected_]);
        lists_[selected_] = created();
    }

    void total_release()
    {
        expect_release_of_nodes(model(), true);
        expected_.dealloc(list(), sizeof(GL_list));
        GL_total_release(&lists_[selected_], free_item);
        require(!list(), "total release left the variable");
        forget_nodes(selected_);
        lists_[selected_] = created();
    }

    void measure()
    {
        int32_t bytes = 12;
        for (const model_node &node : model())
            bytes += 12 + size_of_item(node.item);
        require(GL_check(list(), size_of_item) == bytes, "check reports another size");
        require(GL_count_items(list()) == static_cast<int32_t>(model().size()), "another count");
    }

    /* ---- iterators ---- */

    GL_node *any_position() { return model().empty() ? nullptr : model()[any_index()].position; }

    void start_iterator()
    {
        GL_node *first = model().empty() ? nullptr : model().front().position;
        GL_node *last = model().empty() ? nullptr : model().back().position;
        GL_node *from = any_position();
        GL_node *to = any_position();
        int forward = static_cast<int>(bytes_.below(3)) - 1;
        iterator_pair &pair = iterators_[bytes_.below(iterators_.size())];
        pair.list = selected_;
        pair.alive = true;
        switch (bytes_.below(6)) {
        case 0: pair.real = GL_empty_iter(), pair.model = {nullptr, nullptr, nullptr, 1, nullptr}; break;
        case 1: pair.real = GL_all_items(list()), pair.model = {nullptr, first, last, 1, nullptr}; break;
        case 2: pair.real = GL_all_items_reversed(list()), pair.model = {nullptr, last, first, 0, nullptr}; break;
        case 3: pair.real = GL_tested_items(list(), test_odd), pair.model = {nullptr, first, last, 1, test_odd}; break;
        case 4:
            pair.real = GL_all_items_inbetween(list(), from, to, forward);
            pair.model = {nullptr, from, to, forward, nullptr};
            break;
        default:
            GL_test test = forward == 1 ? test_none : test_odd;
            pair.real = GL_tested_items_inbetween(list(), from, to, forward, test);
            pair.model = {nullptr, from, to, forward, test};
            break;
        }
    }

    /* One application of the stepping rule to the model; what was rejected last is in `node`. */
    bool step_model(iterator_pair &pair, model_node &node)
    {
        GL_iterator &model = pair.model;
        const model_list &nodes = models_[pair.list];
        while (model.next) {
            auto at = std::find_if(nodes.begin(), nodes.end(),
                                   [&](const model_node &candidate) { return candidate.position == model.next; });
            node = *at;
            model.current = at->position;
            if (at->position == model.end)
                model.next = nullptr;
            else if (model.forward)
                model.next = at + 1 == nodes.end() ? nullptr : (at + 1)->position;
            else
                model.next = at == nodes.begin() ? nullptr : (at - 1)->position;
            if (!model.test)
                return true;
            expected_.call("test " + text(node.item));
            if (model.test == test_odd && accepts_odd(node.item))
                return true;
        }
        return false;
    }

    void next_item()
    {
        iterator_pair &pair = iterators_[bytes_.below(iterators_.size())];
        if (!pair.alive)
            return;
        model_node expected{nullptr, this};
        void *item = this;
        bool more = step_model(pair, expected);
        require(GL_next_item(&pair.real, &item) == (more ? 1 : 0), "next_item returned another result");
        require(item == expected.item, "next_item stored another item");
    }

    void next_position()
    {
        iterator_pair &pair = iterators_[bytes_.below(iterators_.size())];
        if (!pair.alive)
            return;
        GL_node *untouched = reinterpret_cast<GL_node *>(this);
        model_node expected{untouched, nullptr};
        GL_node *position = untouched;
        bool more = step_model(pair, expected);
        require(GL_next_position(&pair.real, &position) == (more ? 1 : 0), "next_position returned another result");
        require(position == expected.position, "next_position stored another position");
    }

    /* ---- comparison ---- */

    GL_node *position_of(const void *item)
    {
        auto found =
            std::find_if(model().begin(), model().end(), [&](const model_node &node) { return node.item == item; });
        return found == model().end() ? nullptr : found->position;
    }

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

    static void compare_list(const GL_list &list, const model_list &nodes)
    {
        int broken = broken_invariant(list);
        require(broken == 0, "invariant " + std::to_string(broken) + " is broken");
        require(list.count == static_cast<int32_t>(nodes.size()), "another number of nodes");
        const GL_node *node = list.first;
        for (const model_node &expected : nodes) {
            require(node == expected.position, "another node");
            require(node->item == expected.item, "another item");
            node = node->next;
        }
    }

    static void compare_iterator(const GL_iterator &real, const GL_iterator &model)
    {
        require(real.current == model.current, "iterator: another current");
        require(real.next == model.next, "iterator: another next");
        require(real.end == model.end, "iterator: another end");
        require(real.forward == model.forward, "iterator: another direction");
        require(real.test == model.test, "iterator: another test");
    }

    byte_source bytes_;
    recording_host &host_ = recording_host::get();
    std::array<GL_list *, 3> lists_{};
    std::array<model_list, 3> models_;
    std::array<iterator_pair, 4> iterators_{};
    expected_calls expected_;
    std::size_t selected_ = 0;
};

[[maybe_unused]] const bool added = add_model({.family = "generic_list",
                                               .run = run_interpreter<interpreter>,
                                               .long_runs = {400, 2000},
                                               .short_runs = {4000, 40}});

} // namespace

} // namespace mova::test
