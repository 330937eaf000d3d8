/* Operations on three simple lists, open and closed, and four iterators, beside a model made of vectors. After
   every operation the result, the lists' contents and invariants, the links of items that are on no list, every
   iterator's fields, the raises, the callbacks and the host calls are compared. */
#include "expected_calls.h"
#include "model.h"

#include <mova/lists/simple_list.h>
#include <mova/lists/internal/invariants.h>

#include <array>
#include <deque>
#include <iterator>

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

struct model_list {
    std::vector<item *> items;
    bool closed = false;

    std::ptrdiff_t size() const { return static_cast<std::ptrdiff_t>(items.size()); }
    bool empty() const { return items.empty(); }
    std::ptrdiff_t index_of(const void *sought) const
    {
        return std::find(items.begin(), items.end(), sought) - items.begin();
    }
    bool holds(const void *sought) const { return index_of(sought) < size(); }

    /* The item `steps` further on: around a ring, or null past an open end. */
    item *neighbour(const void *from, std::ptrdiff_t steps) const
    {
        std::ptrdiff_t index = index_of(from) + steps;
        if (closed)
            index = (index % size() + size()) % size();
        return index < 0 || index >= size() ? nullptr : items[static_cast<std::size_t>(index)];
    }
};

struct iterator_pair {
    SL_iterator real;
    SL_iterator model;
    std::size_t list;
    bool alive;
};

class interpreter {
public:
    explicit interpreter(byte_source bytes) : bytes_(bytes)
    {
        for (int number = 0; number < 60; ++number)
            records_.push_back({nullptr, nullptr, number});
        for (item &record : records_)
            free_.push_back(&record);
        spare_items = &free_;
        for (SL_list *&list : lists_)
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
            total_release(i);
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
            &interpreter::release,
            &interpreter::total_release_one,
            &interpreter::start_iterator,
            &interpreter::start_iterator,
            &interpreter::step_iterator,
            &interpreter::step_iterator,
            &interpreter::step_iterator,
        };
        selected_ = bytes_.below(lists_.size());
        (this->*operations[bytes_.below(std::size(operations))])();
    }

    SL_list *list() { return lists_[selected_]; }
    model_list &model() { return models_[selected_]; }
    item *any_item() { return model().items[bytes_.below(model().items.size())]; }

    /* Runs `use` with an item that is on no list, where one is left. */
    template <class Use>
    void with_free_item(Use use)
    {
        if (free_.empty())
            return;
        item *chosen = free_[bytes_.below(free_.size())];
        use(chosen);
    }

    void note_insertion(std::ptrdiff_t index, item *inserted)
    {
        std::erase(free_, inserted);
        model().items.insert(model().items.begin() + index, inserted);
    }

    SL_list *created()
    {
        expected_.alloc(sizeof(SL_list));
        return SL_create();
    }

    void append()
    {
        with_free_item([&](item *chosen) {
            SL_append_after_last(list(), chosen);
            note_insertion(model().size(), chosen);
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
        if (model().empty())
            return append();
        with_free_item([&](item *chosen) {
            item *position = any_item();
            SL_insert_before(list(), position, chosen);
            note_insertion(model().index_of(position), chosen);
        });
    }

    void insert_after()
    {
        if (model().empty())
            return append();
        with_free_item([&](item *chosen) {
            item *position = any_item();
            SL_insert_after(list(), position, chosen);
            note_insertion(model().index_of(position) + 1, chosen);
        });
    }

    int32_t any_near_index() { return static_cast<int32_t>(bytes_.below(model().items.size() + 4)) - 2; }
    bool is_index(int32_t index) { return index >= 0 && index < model().size(); }

    void insert_at_index()
    {
        with_free_item([&](item *chosen) {
            int32_t index = any_near_index();
            bool after = bytes_.below(2) == 1;
            int inserted =
                after ? SL_insert_after_index(list(), index, chosen) : SL_insert_before_index(list(), index, chosen);
            require(inserted == is_index(index), "insertion at an index returned another result");
            if (inserted)
                note_insertion(index + after, chosen);
        });
    }

    /* On a ring that does not hold the item this does not end. */
    void insert_unique()
    {
        if (!model().empty() && bytes_.below(2) == 0)
            return SL_insert_unique(list(), any_item());
        if (model().closed && !model().empty())
            return;
        with_free_item([&](item *chosen) {
            SL_insert_unique(list(), chosen);
            note_insertion(model().size(), chosen);
        });
    }

    void note_removal(item *removed)
    {
        model().items.erase(model().items.begin() + model().index_of(removed));
        free_.push_back(removed);
        for (iterator_pair &pair : iterators_) {
            bool ran_past_its_end = pair.list == selected_ && pair.model.end == removed && model().closed;
            pair.alive = pair.alive && pair.model.upcoming != removed && !ran_past_its_end;
        }
    }

    void remove()
    {
        if (model().empty())
            return;
        item *removed = any_item();
        SL_remove_item(list(), removed);
        note_removal(removed);
    }

    void remove_at_index()
    {
        int32_t index = any_near_index();
        item *removed = is_index(index) ? model().items[static_cast<std::size_t>(index)] : nullptr;
        require(SL_remove_at_index(list(), index) == (removed ? 1 : 0), "remove_at_index returned another result");
        if (removed)
            note_removal(removed);
    }

    void close_or_open()
    {
        model().closed = bytes_.below(2) == 1;
        model().closed ? SL_set_closed(list()) : SL_reset_closed(list());
        for (iterator_pair &pair : iterators_) {
            if (pair.alive && pair.list == selected_ && model().closed && pair.model.upcoming)
                pair.alive = model().holds(pair.model.end);
        }
    }

    void advance()
    {
        if (model().empty())
            return;
        item *from = any_item();
        int32_t steps = static_cast<int32_t>(bytes_.below(24)) - 12;
        require(SL_advance(list(), from, steps) == model().neighbour(from, steps), "advanced elsewhere");
    }

    void look_up()
    {
        int32_t index = any_near_index();
        item *sought = is_index(index) ? model().items[static_cast<std::size_t>(index)] : nullptr;
        require(SL_pos_at_index(list(), index) == sought, "another item at an index");
        if (sought)
            require(SL_get_index(list(), sought) == index, "another index");
        require(SL_count_items(list()) == model().size(), "another count");
    }

    void measure()
    {
        int32_t bytes = 16;
        for (item *each : model().items)
            bytes += size_of_item(each);
        require(SL_check(list(), size_of_item) == bytes, "check reports another size");
    }

    void total_copy()
    {
        std::size_t target = (selected_ + 1) % lists_.size();
        if (free_.size() < model().items.size())
            return;
        model_list copy;
        copy.closed = model().closed;
        expected_.alloc(sizeof(SL_list));
        for (item *each : model().items) {
            expected_.call("copy " + number_of(each));
            copy.items.push_back(free_[free_.size() - 1 - copy.items.size()]);
        }
        SL_list *made = SL_total_copy(list(), copy_item);
        total_release(target);
        lists_[target] = made;
        models_[target] = copy;
    }

    void join()
    {
        std::size_t source = bytes_.below(lists_.size());
        if (source == selected_ || model().closed || models_[source].closed)
            return;
        expected_.dealloc(lists_[source], sizeof(SL_list));
        SL_append_list(list(), &lists_[source]);
        require(!lists_[source], "the other variable was not cleared");
        model().items.insert(model().items.end(), models_[source].items.begin(), models_[source].items.end());
        for (iterator_pair &pair : iterators_)
            pair.list = pair.list == source ? selected_ : pair.list;
        models_[source] = {};
        lists_[source] = created();
    }

    void reverse()
    {
        SL_reverse(list());
        std::reverse(model().items.begin(), model().items.end());
    }

    void roll()
    {
        bool to_lone_item = !free_.empty() && bytes_.below(4) == 0;
        if (!to_lone_item && model().empty())
            return;
        item *chosen = to_lone_item ? free_.back() : any_item();
        bool raises = to_lone_item && model().closed;
        if (raises)
            expected_.raise("sgenlist", raised_line_of_roll, MOVA_PRECONDITION_BROKEN);
        try {
            SL_roll(list(), chosen);
            require(!raises, "did not raise");
        } catch (const raised &) {
            require(raises, "raised");
        }
        if (model().closed && !raises) {
            auto &items = model().items;
            std::rotate(items.begin(), items.begin() + model().index_of(chosen), items.end());
        }
    }

    void expect_free_of_items(std::size_t index)
    {
        for (item *each : models_[index].items) {
            expected_.call("free " + number_of(each));
            free_.push_back(each);
        }
        models_[index] = {};
        for (iterator_pair &pair : iterators_)
            pair.alive = pair.alive && pair.list != index;
    }

    void make_empty()
    {
        expect_free_of_items(selected_);
        SL_make_empty(list(), free_item);
    }

    void total_release(std::size_t index)
    {
        expect_free_of_items(index);
        expected_.dealloc(lists_[index], sizeof(SL_list));
        SL_total_release(&lists_[index], free_item);
        require(!lists_[index], "total release left the variable");
    }

    void total_release_one()
    {
        total_release(selected_);
        lists_[selected_] = created();
    }

    /* A list with items raises and stays, where the raise throws. */
    void release()
    {
        bool raises = !model().empty();
        if (raises)
            expected_.raise("sgenlist", raised_line_of_release, MOVA_PRECONDITION_BROKEN);
        else
            expected_.dealloc(list(), sizeof(SL_list));
        try {
            SL_release(&lists_[selected_]);
            require(!raises && !list(), "released a list with items, or left the variable");
            models_[selected_] = {};
            lists_[selected_] = created();
        } catch (const raised &) {
            require(raises, "raised");
        }
    }

    void start_iterator()
    {
        iterator_pair &pair = iterators_[bytes_.below(iterators_.size())];
        void *first = model().empty() ? nullptr : model().items.front();
        void *last = model().empty() ? nullptr : model().items.back();
        void *from = model().empty() ? nullptr : any_item();
        void *to = model().empty() ? nullptr : any_item();
        int forward = static_cast<int>(bytes_.below(3)) - 1;
        auto set = [&](SL_iterator real, SL_iterator wanted) { pair = {real, wanted, selected_, true}; };
        switch (bytes_.below(7)) {
        case 0: return set(SL_empty_iter(), {nullptr, nullptr, nullptr, 1, 0, nullptr});
        case 1: return set(SL_all_items(list()), {nullptr, first, last, 1, 0, nullptr});
        case 2: return set(SL_all_items_reversed(list()), {nullptr, last, first, 0, 0, nullptr});
        case 3: return set(SL_tested_items(list(), test_odd), {nullptr, first, last, 1, 0, test_odd});
        case 4: return set(SL_tested_items_reversed(list(), test_odd), {nullptr, last, first, 0, 0, test_odd});
        case 5: return set(SL_all_items_inbetween(list(), from, to, forward), {nullptr, from, to, forward, 0, nullptr});
        default:
            return set(SL_tested_items_inbetween(list(), from, to, forward, test_odd),
                       {nullptr, from, to, forward, 0, test_odd});
        }
    }

    bool step_model(iterator_pair &pair)
    {
        SL_iterator &model = pair.model;
        const model_list &items = models_[pair.list];
        while (model.upcoming) {
            model.current = model.upcoming;
            model.upcoming =
                model.current == model.end ? nullptr : items.neighbour(model.current, model.forward ? 1 : -1);
            if (!model.test)
                return true;
            expected_.call("test " + number_of(model.current));
            if (item_of(model.current)->number % 2)
                return true;
        }
        return false;
    }

    void step_iterator()
    {
        iterator_pair &pair = iterators_[bytes_.below(iterators_.size())];
        if (!pair.alive)
            return;
        bool more = step_model(pair);
        void *delivered = this;
        require(SL_next_item(&pair.real, &delivered) == (more ? 1 : 0), "next_item returned another result");
        require(delivered == (more ? pair.model.current : this), "next_item stored another item");
    }

    void compare()
    {
        for (std::size_t i = 0; i < lists_.size(); ++i)
            compare_list(*lists_[i], models_[i]);
        for (const iterator_pair &pair : iterators_) {
            if (pair.alive)
                compare_iterator(pair.real, pair.model);
        }
        for (const item *each : free_)
            require(!each->prev && !each->next, "an item on no list has links");
        expected_.compare();
    }

    static void compare_list(const SL_list &list, const model_list &model)
    {
        int broken = broken_invariant(list);
        require(broken == 0, "invariant " + std::to_string(broken) + " is broken");
        require(list.count == model.size(), "another number of items");
        require(list.closed == (model.closed ? 1 : 0), "another closed flag");
        void *reached = list.first;
        for (item *each : model.items) {
            require(reached == each, "another item");
            reached = each->next;
        }
    }

    static void compare_iterator(const SL_iterator &real, const SL_iterator &model)
    {
        require(real.current == model.current, "iterator: another current");
        require(real.upcoming == model.upcoming, "iterator: another upcoming");
        require(real.end == model.end, "iterator: another end");
        require(real.forward == model.forward, "iterator: another direction");
        require(real.test == model.test, "iterator: another test");
    }

    byte_source bytes_;
    expected_calls expected_;
    std::deque<item> records_;
    std::vector<item *> free_;
    std::array<SL_list *, 3> lists_{};
    std::array<model_list, 3> models_;
    std::array<iterator_pair, 4> iterators_{};
    std::size_t selected_ = 0;
};

[[maybe_unused]] const bool added = add_model(
    {.family = "simple_list", .run = run_interpreter<interpreter>, .long_runs = {400, 2000}, .short_runs = {4000, 40}});

} // namespace

} // namespace mova::test
