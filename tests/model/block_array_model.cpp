/* SPDX-License-Identifier: MIT */
/* Operations on three block arrays, open and closed, beside a model made of vectors. After every operation the
   result, every field, the whole storage, the invariants and the host calls are compared. */
#include "model.h"
#include "element_vector.h"
#include "expected_calls.h"

#include <mova/arrays/block_array.h>

#include <tests/support/plain_code.h>
#include <tests/support/array_storage.h>

namespace mova::test {

namespace {

constexpr uint8_t fresh_byte = 0xCD;

struct model_block {
    element_vector storage; /* as many as the capacity */
    int32_t count = 0;
    int32_t increment = 10;
    bool closed = false;

    int32_t capacity() const { return static_cast<int32_t>(storage.size()); }
    element_vector::iterator at(int32_t index) { return storage.begin() + index; }
};

class interpreter : public byte_interpreter {
public:
    explicit interpreter(byte_source bytes) : byte_interpreter(bytes), plain_(bytes_.below(2, 1) == 0)
    {
        element_size_ = element_sizes[bytes_.below(element_sizes.size(), 1)];
        for (selected_ = 0; selected_ < blocks_.size(); ++selected_)
            initialise(selected_);
    }

private:
    using operation = void (interpreter::*)();

    void operate() override
    {
        static constexpr operation operations[] = {
            &interpreter::append,        &interpreter::append,        &interpreter::append,
            &interpreter::append_block,  &interpreter::insert,        &interpreter::insert,
            &interpreter::remove,        &interpreter::remove_last,   &interpreter::replace,
            &interpreter::set_increment, &interpreter::set_size,      &interpreter::set_size,
            &interpreter::make_empty,    &interpreter::close_or_open, &interpreter::advance,
            &interpreter::advance,       &interpreter::close_or_open, &interpreter::copy,
            &interpreter::copy_into,     &interpreter::reverse,       &interpreter::cut_open,
            &interpreter::split,         &interpreter::roll_ring,     &interpreter::roll_ring,
            &interpreter::release_one,   &interpreter::start_again,
        };
        selected_ = bytes_.below(block_count());
        do_one_of(operations);
    }

    /* Where every small case is tried there are two blocks. The second has an element at most; the first is smaller then, and
       where the second has lost or got storage. */
    bool describe(state_text &state, std::size_t most) const override
    {
        for (std::size_t i = 0; i < 2; ++i) {
            const model_block &described = models_[i];
            state.add(described.count, described.capacity(), described.increment, described.closed);
            for (int32_t each = 0; each < described.count; ++each)
                state.add(described.storage[static_cast<std::size_t>(each)][0]);
        }
        const auto bound = static_cast<int32_t>(most);
        const model_block &first = models_[0], &second = models_[1];
        const int32_t of_second = 3 * second.count + (second.capacity() == 1 ? 0 : 2);
        return first.count + of_second <= bound && first.capacity() <= bound + 1 && second.count <= 1 &&
               second.capacity() <= 2 && second.increment == 10 && !second.closed;
    }

    void finish() override
    {
        for (std::size_t i = 0; i < blocks_.size(); ++i)
            release(i);
        expected_.require_nothing_left();
    }

    /* ---- what the operations choose ---- */

    GB_block *block() { return &blocks_[selected_]; }
    model_block &model() { return models_[selected_]; }
    std::size_t block_count() const { return bytes_.is_exhaustive() ? 2 : blocks_.size(); }
    raw_element any_element() { return element_of(element_size_, bytes_.below(6, 2)); }
    std::size_t other_than_selected() { return (selected_ + 1 + bytes_.below(block_count() - 1)) % block_count(); }
    int32_t index_up_to(int32_t bound)
    {
        return static_cast<int32_t>(bytes_.below(static_cast<std::size_t>(bound) + 1));
    }
    std::size_t bytes_of(int32_t count) const { return static_cast<std::size_t>(count) * element_size_; }

    /* ---- what the model does ---- */

    void expect_init(std::size_t index, int32_t capacity)
    {
        capacity = std::max(capacity, 1);
        expected_.alloc(bytes_of(capacity));
        models_[index] = {};
        models_[index].storage.assign(static_cast<std::size_t>(capacity), raw_element(element_size_, fresh_byte));
    }

    void expect_capacity(std::size_t index, int32_t n)
    {
        model_block &sized = models_[index];
        if (n <= sized.count || n == sized.capacity())
            return;
        if (sized.storage.empty())
            expected_.alloc(bytes_of(n));
        else
            expected_.realloc(host_.name_of(blocks_[index].data), bytes_of(sized.capacity()), bytes_of(n));
        sized.storage.resize(static_cast<std::size_t>(n), raw_element(element_size_, fresh_byte));
    }

    void expect_room_for_one()
    {
        if (model().count >= model().capacity())
            expect_capacity(selected_, model().count + model().increment);
    }

    void expect_release(std::size_t index)
    {
        if (!models_[index].storage.empty())
            expected_.dealloc(blocks_[index].data, bytes_of(models_[index].capacity()));
        models_[index].storage.clear();
    }

    /* ---- operations ---- */

    void initialise(std::size_t index)
    {
        const int32_t capacity = bytes_.between(-2, 7, 0, index == 0 ? 2 : 0);
        expect_init(index, capacity);
        void *storage = GB_init(&blocks_[index], static_cast<uint32_t>(element_size_), capacity);
        require(storage == blocks_[index].data, "init returned another pointer");
    }

    void release(std::size_t index)
    {
        expect_release(index);
        GB_release(&blocks_[index]);
    }

    void start_again()
    {
        release(selected_);
        initialise(selected_);
    }

    void release_one()
    {
        release(selected_);
        require(GB_count_items(block()) == model().count, "release changed the count");
        GB_make_empty(block());
        model().count = 0;
    }

    void append()
    {
        const raw_element element = any_element();
        expect_room_for_one();
        *model().at(model().count) = element;
        require(GB_append_after_last(block(), element.data()) == model().count, "appended at another index");
        ++model().count;
    }

    void append_block()
    {
        const std::size_t other = other_than_selected();
        model_block &appended = models_[other];
        const int32_t first = model().count;
        if (model().capacity() < first + appended.count)
            expect_capacity(selected_, first + appended.count);
        std::copy_n(appended.storage.begin(), appended.count, model().at(first));
        model().count += appended.count;
        expect_release(other);
        require(GB_append_block(block(), &blocks_[other]) == first, "appended a block at another index");
        GB_make_empty(&blocks_[other]);
        appended.count = 0;
    }

    void insert()
    {
        const raw_element element = any_element();
        const int32_t index = index_up_to(model().count);
        expect_room_for_one();
        std::copy_backward(model().at(index), model().at(model().count), model().at(model().count + 1));
        *model().at(index) = element;
        ++model().count;
        GB_insert_item(block(), index, element.data());
    }

    void remove()
    {
        if (model().count == 0)
            return;
        const int32_t index = index_up_to(model().count - 1);
        std::copy(model().at(index + 1), model().at(model().count), model().at(index));
        --model().count;
        GB_remove_item(block(), index);
    }

    void remove_last()
    {
        if (model().count == 0)
            return;
        --model().count;
        GB_remove_last_item(block());
    }

    void replace()
    {
        if (model().count == 0)
            return;
        const int32_t index = index_up_to(model().count - 1);
        const raw_element element = any_element();
        *model().at(index) = element;
        GB_replace_item(block(), GB_get_index(block(), index), element.data());
    }

    void set_increment()
    {
        model().increment = bytes_.between(1, 12, 1, 2);
        GB_set_inc(block(), model().increment);
    }

    void set_size()
    {
        const int32_t n = bytes_.between(-2, model().count + 7, -1, model().count + 3);
        expect_capacity(selected_, n);
        GB_set_number_of_elements(block(), n);
    }

    void make_empty()
    {
        model().count = 0;
        GB_make_empty(block());
    }

    void close_or_open()
    {
        model().closed = bytes_.below(2) == 1;
        model().closed ? GB_set_closed(block()) : GB_reset_closed(block());
    }

    void advance()
    {
        const int32_t index = bytes_.between(-2, 10, -1, 6), steps = bytes_.between(-20, 20, -7, 7);
        int32_t reached = index + steps;
        while (model().closed && model().count > 0 && reached < 0)
            reached += model().count;
        while (model().closed && model().count > 0 && reached >= model().count)
            reached -= model().count;
        if (reached < 0 || reached >= model().count)
            reached = -1;
        require(GB_advance(block(), index, steps) == reached, "advanced elsewhere");
    }

    void copy()
    {
        const std::size_t other = other_than_selected();
        release(other);
        expect_init(other, model().count);
        models_[other].increment = model().increment;
        take_elements(other);
        GB_copy(&blocks_[other], block());
    }

    /* The count, the state and the elements of the selected block. */
    void take_elements(std::size_t target)
    {
        models_[target].count = model().count;
        models_[target].closed = model().closed;
        std::copy_n(model().storage.begin(), model().count, models_[target].storage.begin());
    }

    void copy_into()
    {
        const std::size_t other = other_than_selected();
        expect_capacity(other, model().count);
        take_elements(other);
        GB_copy_into(&blocks_[other], block());
    }

    void reverse()
    {
        expected_.buffer(element_size_);
        std::reverse(model().storage.begin(), model().at(model().count));
        GB_reverse(block());
    }

    void cut_open()
    {
        const int32_t position = index_up_to(model().count + 2) - 1;
        if (model().closed && position >= 0 && position < model().count) {
            expect_room_for_one();
            expected_.buffer(bytes_of(model().count));
            roll(model().storage, static_cast<std::size_t>(model().count), static_cast<std::size_t>(position));
            *model().at(model().count) = model().storage.front();
            ++model().count;
            model().closed = false;
        }
        GB_make_open_at_position(block(), position);
    }

    void split()
    {
        const std::size_t other = other_than_selected();
        const int32_t position = index_up_to(model().count + 2) - 1;
        release(other);
        if (!model().closed && position >= 0 && position < model().count) {
            const int32_t count = model().count - position;
            expect_init(other, count);
            std::copy_n(model().at(position), count, models_[other].storage.begin());
            models_[other].count = count;
            models_[other].increment = model().increment;
            model().count = position + 1;
        } else {
            GB_make_empty(&blocks_[other]);
            models_[other].count = 0;
        }
        GB_remove_and_get_end_part(&blocks_[other], block(), position);
    }

    void roll_ring()
    {
        const int32_t n = bytes_.between(-30, 30, -6, 6);
        if (model().closed && model().count >= 2) {
            const auto count = static_cast<std::size_t>(model().count);
            const std::size_t first = first_after_roll(count, n);
            if (first > 0)
                expected_.buffer(std::min(first, count - first) * element_size_);
            roll(model().storage, count, first);
        }
        GB_roll(block(), n);
    }

    /* ---- comparison ---- */

    void compare() override
    {
        for (std::size_t i = 0; i < blocks_.size(); ++i)
            compare_block(blocks_[i], models_[i]);
        expected_.compare();
    }

    void compare_block(const GB_block &block, const model_block &model) const
    {
        require(block.capacity == model.capacity(), "another capacity");
        require(block.count == model.count, "another count");
        require(GB_count_items(&block) == model.count, "counted differently");
        require(block.increment == model.increment, "another increment");
        require(block.closed == (model.closed ? 1 : 0), "another state");
        require(block.element_size == element_size_, "another element size");
        if (model.storage.empty())
            return;
        const int broken = broken_invariant(block);
        require(broken == 0, "invariant " + std::to_string(broken) + " is broken");
        require_elements(block.data, model.storage);
    }

    plain_code plain_;
    recording_host &host_ = recording_host::get();
    expected_calls expected_;
    std::array<GB_block, 3> blocks_{};
    std::array<model_block, 3> models_;
    std::size_t element_size_ = 0;
    std::size_t selected_ = 0;
};

[[maybe_unused]] const bool added = add_model<interpreter>("block_array", {150, 1500}, {1500, 40}, {2, 5});

} // namespace

} // namespace mova::test
