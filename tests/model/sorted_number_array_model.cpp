/* SPDX-License-Identifier: MIT */
/* Edits of a companion list, some of whose entries are selected, with a sorted number array that follows them, and
   additions to and removals from another sorted number array beside a set. After every operation the numbers, their
   order, the storage's size and the host calls are compared. */
#include "expected_calls.h"
#include "model.h"

#include <mova/arrays/sorted_number_array.h>

#include <tests/support/plain_code.h>
#include <tests/support/array_storage.h>

#include <climits>
#include <set>

namespace mova::test {

namespace {

/* An array with its increment, and what it should hold. */
struct tracked_array {
    DA_array *array;
    int32_t increment;
    int32_t nalloc = 0;
    std::vector<int32_t> numbers;
};

class interpreter : public byte_interpreter {
public:
    explicit interpreter(byte_source bytes) : byte_interpreter(bytes), plain_(bytes_.below(2, 1) == 0)
    {
        for (tracked_array *made : {&selection_, &loose_}) {
            made->increment = 1 + static_cast<int32_t>(bytes_.below(20, 2));
            expected_.alloc(sizeof(DA_array));
            made->array = DA_create(4, made->increment);
        }
    }

private:
    using operation = void (interpreter::*)();

    void operate() override
    {
        static constexpr operation operations[] = {
            &interpreter::select,       &interpreter::select,        &interpreter::deselect,
            &interpreter::look_up,      &interpreter::insert_entry,  &interpreter::insert_entry,
            &interpreter::insert_entry, &interpreter::remove_entry,  &interpreter::reverse,
            &interpreter::roll,         &interpreter::add_loose,     &interpreter::add_loose,
            &interpreter::remove_loose, &interpreter::look_up_loose,
        };
        do_one_of(operations);
    }

    void finish() override
    {
        for (const tracked_array *made : {&selection_, &loose_}) {
            if (made->nalloc)
                expected_.dealloc(made->array->data, 4 * static_cast<std::size_t>(made->nalloc));
            expected_.dealloc(made->array, sizeof(DA_array));
            DA_release(made->array);
        }
        expected_.require_nothing_left();
    }

    /* Where every small case is tried one of the two is used at a time. */
    bool describe(state_text &state, std::size_t most) const override
    {
        for (const tracked_array *described : {&selection_, &loose_}) {
            state.add(described->increment, described->nalloc, described->numbers.size());
            for (const int32_t number : described->numbers)
                state.add(number);
        }
        for (const bool selected : companion_)
            state.add(selected);
        return companion_.size() <= most && loose_.numbers.size() <= most &&
               ((companion_.empty() && selection_.nalloc == 0) || loose_.nalloc == 0);
    }

    int32_t index_up_to(std::size_t bound) { return static_cast<int32_t>(bytes_.below(bound + 1)); }
    int32_t length() const { return static_cast<int32_t>(companion_.size()); }

    /* ---- what the model does ---- */

    void expect_room(tracked_array &tracked, int32_t needed)
    {
        if (tracked.nalloc >= needed)
            return;
        const int32_t target = (needed / tracked.increment + 1) * tracked.increment;
        const auto bytes = [](int32_t count) { return 4 * static_cast<std::size_t>(count); };
        if (tracked.nalloc)
            expected_.realloc(host_.name_of(tracked.array->data), bytes(tracked.nalloc), bytes(target));
        else
            expected_.alloc(bytes(target));
        tracked.nalloc = target;
    }

    void add(tracked_array &tracked, int32_t number)
    {
        auto place = std::lower_bound(tracked.numbers.begin(), tracked.numbers.end(), number);
        const auto count = static_cast<int32_t>(tracked.numbers.size());
        if (place == tracked.numbers.end() || *place != number) {
            expect_room(tracked, place == tracked.numbers.end() ? count + 2 : count + 1);
            tracked.numbers.insert(place, number);
        }
        SA_add_number(tracked.array, number);
    }

    void remove(tracked_array &tracked, int32_t number)
    {
        std::erase(tracked.numbers, number);
        SA_remove_number(tracked.array, number);
    }

    /* Where the selected entries are, in order. */
    std::vector<int32_t> selected_positions() const
    {
        std::vector<int32_t> positions;
        for (std::size_t i = 0; i < companion_.size(); ++i) {
            if (companion_[i])
                positions.push_back(static_cast<int32_t>(i));
        }
        return positions;
    }

    /* ---- the selection in step with its companion ---- */

    void select()
    {
        if (companion_.empty())
            return;
        const int32_t position = index_up_to(companion_.size() - 1);
        companion_[static_cast<std::size_t>(position)] = true;
        add(selection_, position);
    }

    void deselect()
    {
        const int32_t position = index_up_to(companion_.size());
        if (position < length())
            companion_[static_cast<std::size_t>(position)] = false;
        remove(selection_, position);
    }

    void look_up()
    {
        const int32_t position = index_up_to(companion_.size());
        const bool selected = position < length() && companion_[static_cast<std::size_t>(position)];
        require(SA_check_number(selection_.array, position) == (selected ? 1 : 0), "found, or did not");
    }

    void insert_entry()
    {
        const int32_t position = index_up_to(companion_.size());
        companion_.insert(companion_.begin() + position, false);
        SA_adapt_for_insert(selection_.array, position);
        selection_.numbers = selected_positions();
    }

    void remove_entry()
    {
        if (companion_.empty())
            return;
        const int32_t position = index_up_to(companion_.size() - 1);
        companion_.erase(companion_.begin() + position);
        SA_adapt_for_remove(selection_.array, position);
        selection_.numbers = selected_positions();
    }

    void reverse()
    {
        expected_.buffer(4);
        std::reverse(companion_.begin(), companion_.end());
        SA_adapt_for_reverse(selection_.array, length());
        selection_.numbers = selected_positions();
    }

    void roll()
    {
        if (companion_.empty())
            return;
        const int32_t n = index_up_to(companion_.size());
        const std::vector<int32_t> before = selection_.numbers;
        std::rotate(companion_.begin(), companion_.begin() + n, companion_.end());
        const std::vector<int32_t> positions = selected_positions();
        const auto below = static_cast<std::size_t>(
            std::count_if(before.begin(), before.end(), [n](int32_t number) { return number < n; }));
        selection_.numbers = rolled(before, n, below);
        SA_adapt_for_roll(selection_.array, n, length());
        compare();
        require(std::is_permutation(positions.begin(), positions.end(), selection_.numbers.begin(),
                                    selection_.numbers.end()),
                "the roll selects other entries");
        put_in_order(positions);
    }

    /* Those below n are at the front; all but the last of them go to the back. */
    std::vector<int32_t> rolled(std::vector<int32_t> numbers, int32_t n, std::size_t below)
    {
        for (int32_t &number : numbers)
            number += number < n ? length() - n : -n;
        if (below > 1) {
            const std::size_t moved = below - 1;
            expected_.buffer(4 * std::min(moved, numbers.size() - moved));
            std::rotate(numbers.begin(), numbers.begin() + static_cast<std::ptrdiff_t>(moved), numbers.end());
        }
        return numbers;
    }

    void put_in_order(const std::vector<int32_t> &positions)
    {
        DA_reset(selection_.array);
        selection_.numbers.clear();
        for (int32_t position : positions)
            add(selection_, position);
    }

    /* ---- any numbers, beside a set ---- */

    int32_t any_number()
    {
        static constexpr int32_t extremes[] = {INT32_MIN, INT32_MIN + 1, -1, 0, 1, INT32_MAX - 1, INT32_MAX};
        const std::size_t chosen = bytes_.below(96, std::size(extremes));
        return chosen < std::size(extremes) ? extremes[chosen] : static_cast<int32_t>(chosen) * 3 - 150;
    }

    void add_loose()
    {
        const int32_t number = any_number();
        set_.insert(number);
        add(loose_, number);
    }

    void remove_loose()
    {
        const int32_t number = any_number();
        set_.erase(number);
        remove(loose_, number);
    }

    void look_up_loose()
    {
        const int32_t number = any_number();
        require(SA_check_number(loose_.array, number) == (set_.contains(number) ? 1 : 0), "found, or did not");
    }

    /* ---- comparison ---- */

    void compare() override
    {
        compare_array(selection_);
        compare_array(loose_);
        require(broken_invariant_of_numbers(*loose_.array) == 0, "out of order");
        require(std::equal(set_.begin(), set_.end(), loose_.numbers.begin(), loose_.numbers.end()), "another set");
        expected_.compare();
    }

    static void compare_array(const tracked_array &tracked)
    {
        const int broken = broken_invariant(*tracked.array);
        require(broken == 0, "invariant " + std::to_string(broken) + " is broken");
        require(DA_nalloc(tracked.array) == tracked.nalloc, "another capacity");
        const auto *numbers = static_cast<const int32_t *>(DA_data(tracked.array));
        require(std::equal(numbers, numbers + DA_nitems(tracked.array), tracked.numbers.begin(), tracked.numbers.end()),
                "other numbers");
    }

    plain_code plain_;
    recording_host &host_ = recording_host::get();
    expected_calls expected_;
    tracked_array selection_{};
    tracked_array loose_{};
    std::vector<bool> companion_; /* which entries are selected */
    std::set<int32_t> set_;
};

[[maybe_unused]] const bool added = add_model<interpreter>("sorted_number_array", {150, 1500}, {1500, 40}, {3, 5});

} // namespace

} // namespace mova::test
