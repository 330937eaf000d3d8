/* SPDX-License-Identifier: MIT */
/* Operations on three dynamic arrays and four iterators, beside a model made of vectors. After every operation the
   result, every field, the whole storage, the invariants, every iterator's fields, the raises, the tests asked and the
   host calls are compared. */
#include "model.h"
#include "element_vector.h"
#include "expected_calls.h"

#include <mova/arrays/dynamic_array.h>

#include <tests/support/plain_code.h>
#include <tests/support/array_storage.h>

#include <utility>

namespace mova::test {

namespace {

constexpr int32_t line_of_extend = 111, line_of_copy = 271, line_of_copy_into = 289;

bool accepts(uint8_t first_byte)
{
    return first_byte % 64 >= 32;
}

int test_first_byte(void *element)
{
    uint8_t value;
    std::memcpy(&value, element, 1);
    recording_host::get().write_down("test " + std::to_string(value));
    return accepts(value) ? -1 : 0;
}

struct model_array {
    std::size_t element_size = 0;
    int32_t increment = 1;
    int32_t nitems = 0;
    element_vector storage; /* as many as are allocated */

    int32_t nalloc() const { return static_cast<int32_t>(storage.size()); }
    element_vector::iterator at(int32_t index) { return storage.begin() + index; }
    std::size_t bytes_of(int32_t count) const { return static_cast<std::size_t>(count) * element_size; }
    int32_t target_for(int32_t n) const { return (n / increment + 1) * increment; }

    /* Written over as raw bytes, as far as they reach. */
    void overwrite(const raw_element &bytes, int32_t count)
    {
        for (std::size_t i = 0; i < bytes_of(count); ++i)
            storage[i / element_size][i % element_size] = bytes[i];
    }
};

struct iterator_pair {
    DA_iterator real;
    DA_iterator model;
    std::size_t array;
    bool alive;
};

class interpreter : public byte_interpreter {
public:
    explicit interpreter(byte_source bytes) : byte_interpreter(bytes), plain_(bytes_.below(2, 1) == 0)
    {
        for (std::size_t i = 0; i < arrays_.size(); ++i)
            create(i);
    }

private:
    using operation = void (interpreter::*)();

    void operate() override
    {
        static constexpr operation operations[] = {
            &interpreter::append,        &interpreter::append,        &interpreter::insert,
            &interpreter::insert,        &interpreter::remove,        &interpreter::put,
            &interpreter::put_null,      &interpreter::get,           &interpreter::extend,
            &interpreter::set_size,      &interpreter::truncate,      &interpreter::reset,
            &interpreter::clear,         &interpreter::string,        &interpreter::equal,
            &interpreter::copy,          &interpreter::copy_into,     &interpreter::reverse,
            &interpreter::roll_array,    &interpreter::roll_array,    &interpreter::fail_to_grow,
            &interpreter::start_again,   &interpreter::fail_to_copy,  &interpreter::start_iterator,
            &interpreter::step_iterator, &interpreter::step_iterator, &interpreter::step_iterator,
        };
        selected_ = bytes_.below(array_count());
        do_one_of(operations);
    }

    /* Where every small case is tried there are two arrays and an iterator. The first array is smaller where the second has
       elements, or storage, or larger elements, and with an iterator, which walks on the first. */
    bool describe(state_text &state, std::size_t most) const override
    {
        for (std::size_t i = 0; i < 2; ++i) {
            const model_array &described = models_[i];
            state.add(described.element_size, described.increment, described.nitems, described.nalloc());
            for (int32_t each = 0; each < described.nitems; ++each)
                state.add(described.storage[static_cast<std::size_t>(each)][0]);
        }
        const auto bound = static_cast<int32_t>(most);
        const model_array &first = models_[0], &second = models_[1];
        const int32_t of_second = 2 * second.nitems + second.nalloc() + (second.element_size == 1 ? 0 : 2);
        const bool is_within =
            first.nitems + of_second <= bound && first.nalloc() <= bound + 1 && second.increment == 1;
        const iterator_pair &walking = iterators_[0];
        state.add(walking.alive);
        if (!walking.alive)
            return is_within;
        const DA_iterator &at = walking.model;
        state.add(walking.array, at.forward, at.current, at.last, at.test != nullptr);
        return is_within && walking.array == 0 && first.nitems + 3 <= bound && of_second == 0;
    }

    void finish() override
    {
        for (std::size_t i = 0; i < arrays_.size(); ++i)
            release(i);
        DA_release(nullptr);
        expected_.require_nothing_left();
    }

    /* ---- what the operations choose ---- */

    DA_array *array() { return arrays_[selected_]; }
    model_array &model() { return models_[selected_]; }
    std::size_t array_count() const { return bytes_.is_exhaustive() ? 2 : arrays_.size(); }
    std::size_t other_than_selected() { return (selected_ + 1 + bytes_.below(array_count() - 1)) % array_count(); }
    int32_t index_up_to(int32_t bound)
    {
        return static_cast<int32_t>(bytes_.below(static_cast<std::size_t>(bound) + 1));
    }
    int32_t index_near_end() { return bytes_.between(0, model().nitems + 5, 0, model().nitems + 2); }

    /* So many elements are put in at once. */
    int32_t any_count(int32_t most) { return bytes_.between(0, most, 0, 2); }

    element_vector any_elements(int32_t count)
    {
        element_vector made;
        for (int32_t i = 0; i < count; ++i)
            made.push_back(element_of(model().element_size, bytes_.below(6, 2)));
        return made;
    }

    /* ---- what the model does ---- */

    void expect_extension(std::size_t index, int32_t n)
    {
        model_array &extended = models_[index];
        const int32_t target = extended.target_for(n);
        if (extended.nalloc() >= target)
            return;
        if (extended.storage.empty())
            expected_.alloc(extended.bytes_of(target));
        else
            expected_.realloc(host_.name_of(arrays_[index]->data), extended.bytes_of(extended.nalloc()),
                              extended.bytes_of(target));
        extended.storage.resize(static_cast<std::size_t>(target), raw_element(extended.element_size, 0));
    }

    void expect_room(int32_t needed)
    {
        if (model().nalloc() < needed)
            expect_extension(selected_, needed);
    }

    void expect_item(int32_t i)
    {
        if (i >= model().nalloc())
            expect_extension(selected_, i + 1);
        model().nitems = std::max(model().nitems, i + 1);
    }

    void expect_clear(std::size_t index)
    {
        if (!models_[index].storage.empty())
            expected_.dealloc(arrays_[index]->data, models_[index].bytes_of(models_[index].nalloc()));
        models_[index].storage.clear();
        models_[index].nitems = 0;
    }

    /* ---- operations ---- */

    void create(std::size_t index)
    {
        models_[index] = {};
        models_[index].element_size = element_sizes[bytes_.below(element_sizes.size(), index == 1 ? 2 : 1)];
        models_[index].increment = bytes_.between(1, 7, 1, index == 0 ? 2 : 1);
        expected_.alloc(sizeof(DA_array));
        arrays_[index] = DA_create(static_cast<uint32_t>(models_[index].element_size), models_[index].increment);
    }

    void release(std::size_t index)
    {
        expect_clear(index);
        expected_.dealloc(arrays_[index], sizeof(DA_array));
        for (iterator_pair &pair : iterators_)
            pair.alive = pair.alive && pair.array != index;
        DA_release(arrays_[index]);
    }

    void start_again()
    {
        release(selected_);
        create(selected_);
    }

    void append()
    {
        const element_vector elements = any_elements(any_count(5));
        const auto count = static_cast<int32_t>(elements.size());
        expect_room(model().nitems + count);
        std::copy(elements.begin(), elements.end(), model().at(model().nitems));
        model().nitems += count;
        DA_append(array(), elements_in_a_row(elements).data(), count);
    }

    void insert()
    {
        const int32_t i = index_near_end();
        const element_vector elements = any_elements(any_count(4));
        const auto count = static_cast<int32_t>(elements.size());
        if (i < model().nitems) {
            expect_room(model().nitems + count);
            std::copy_backward(model().at(i), model().at(model().nitems), model().at(model().nitems + count));
            model().nitems += count;
        } else {
            expect_room(i + count + 1);
            model().nitems = i + count;
        }
        std::copy(elements.begin(), elements.end(), model().at(i));
        DA_insert(array(), i, elements_in_a_row(elements).data(), count);
    }

    void remove()
    {
        const int32_t i = index_up_to(model().nitems), count = index_up_to(model().nitems - i);
        std::copy(model().at(i + count), model().at(model().nitems), model().at(i));
        model().nitems -= count;
        DA_delete(array(), i, count);
    }

    void put()
    {
        const int32_t i = index_near_end();
        const raw_element element = any_elements(1).front();
        expect_item(i);
        *model().at(i) = element;
        DA_put_item(array(), i, element.data());
    }

    void put_null()
    {
        const int32_t i = index_near_end();
        expect_item(i);
        *model().at(i) = raw_element(model().element_size, 0);
        DA_put_item(array(), i, nullptr);
    }

    void get()
    {
        const int32_t i = index_near_end();
        expect_item(i);
        const void *item = DA_get_item(array(), i);
        require(item == static_cast<char *>(DA_data(array())) + model().bytes_of(i), "another item");
    }

    void extend()
    {
        const int32_t n = index_near_end() - 2;
        expect_extension(selected_, n);
        DA_extend(array(), n);
    }

    void set_size()
    {
        const int32_t n = index_near_end();
        expect_extension(selected_, n);
        model().nitems = n;
        DA_setsize(array(), n);
    }

    void truncate()
    {
        const int32_t n = index_near_end();
        model().nitems = std::min(model().nitems, n);
        DA_truncate(array(), n);
    }

    void reset()
    {
        model().nitems = 0;
        DA_reset(array());
    }

    void clear()
    {
        expect_clear(selected_);
        DA_clear(array());
    }

    void string()
    {
        expect_room(model().nitems + 1);
        const auto end = static_cast<std::size_t>(model().nitems);
        model().storage[end / model().element_size][end % model().element_size] = 0;
        require(DA_string(array()) == DA_data(array()), "another string");
    }

    void equal()
    {
        const std::size_t other = bytes_.below(array_count());
        model_array &compared = models_[other];
        const bool same = model().nitems == compared.nitems && model().element_size == compared.element_size &&
                          std::equal(model().storage.begin(), model().at(model().nitems), compared.storage.begin());
        require(DA_equal(array(), arrays_[other]) == (same ? 1 : 0), "compared differently");
    }

    /* Appends to the array at `target` what lies in the storage of the selected one. */
    void expect_appended(std::size_t target, const raw_element &bytes, int32_t count)
    {
        if (count > 0)
            expect_extension(target, count);
        models_[target].overwrite(bytes, count);
        models_[target].nitems = count;
    }

    void copy()
    {
        const std::size_t other = other_than_selected();
        release(other);
        models_[other] = {model().element_size, model().increment, 0, {}};
        expected_.alloc(sizeof(DA_array));
        expect_appended(other, elements_in_a_row(model().storage), model().nitems);
        arrays_[other] = DA_copy(array());
    }

    void copy_into()
    {
        const std::size_t target = bytes_.below(array_count());
        const raw_element bytes = elements_in_a_row(model().storage);
        const bool raises = models_[target].element_size != model().element_size;
        const bool throws = bytes_.below(2) == 1;
        if (raises)
            expected_.raise("darray", line_of_copy_into, MOVA_PRECONDITION_BROKEN);
        if (!raises || !throws) {
            expect_clear(target);
            if (models_[target].bytes_of(model().nitems) <= bytes.size())
                expect_appended(target, bytes, model().nitems);
        }
        expected_.returns_from(raises, throws, [&] { DA_copy_into(arrays_[target], array()); });
    }

    /* The old block is the host's alone then, which gives it up. */
    void fail_to_grow()
    {
        const int32_t n = model().nalloc();
        const std::size_t old_bytes = model().bytes_of(n), new_bytes = model().bytes_of(model().target_for(n));
        void *storage = DA_data(array());
        expected_.call(n == 0 ? "alloc " + std::to_string(new_bytes) + " = null"
                              : "realloc " + host_.name_of(storage) + " " + std::to_string(old_bytes) + " -> " +
                                    std::to_string(new_bytes) + " = null");
        expected_.raise("darray", line_of_extend, MOVA_ALLOCATION_FAILED);
        host_.fail_allocation(1);
        expected_.returns_from(true, bytes_.below(2) == 1, [&] { DA_extend(array(), n); });
        require(!DA_data(array()), "storage after a failure");
        require(DA_nalloc(array()) == n && DA_nitems(array()) == model().nitems, "another size after a failure");
        if (storage) {
            expected_.dealloc(storage, old_bytes);
            MM_dealloc_item(storage, old_bytes);
        }
        model().storage.clear();
        model().nitems = 0;
        DA_clear(array());
    }

    void fail_to_copy()
    {
        expected_.call("alloc " + std::to_string(sizeof(DA_array)) + " = null");
        expected_.raise("darray", line_of_copy, MOVA_ALLOCATION_FAILED);
        host_.fail_allocation(1);
        DA_array *made = nullptr;
        expected_.returns_from(true, bytes_.below(2) == 1, [&] { made = DA_copy(array()); });
        require(!made, "copied without memory");
    }

    void reverse()
    {
        expected_.buffer(model().element_size);
        std::reverse(model().storage.begin(), model().at(model().nitems));
        DA_reverse(array());
    }

    void roll_array()
    {
        const int32_t n = bytes_.between(-30, 30, -6, 6);
        if (model().nitems >= 2) {
            const auto count = static_cast<std::size_t>(model().nitems);
            const std::size_t first = first_after_roll(count, n);
            if (first > 0)
                expected_.buffer(std::min(first, count - first) * model().element_size);
            roll(model().storage, count, first);
        }
        DA_roll(array(), n);
    }

    /* ---- iterators ---- */

    /* An iterator is the caller's record: what is started knows nothing of what was there. */
    void start_iterator()
    {
        iterator_pair &pair = iterators_[bytes_.below(iterators_.size(), 1)];
        if (bytes_.is_exhaustive() && pair.alive)
            return;
        const bool tested = bytes_.below(2) == 1;
        pair.array = selected_;
        pair.alive = true;
        pair.real = tested ? DA_tested_items(array(), test_first_byte) : DA_all_items(array());
        pair.model = {array(), 1, 0, model().nitems - 1, tested ? test_first_byte : nullptr};
        if (bytes_.below(3, 2) > 0)
            return;
        pair.model.forward = pair.real.forward = 0;
        pair.model.current = pair.real.current = index_near_end();
        pair.model.last = pair.real.last = bytes_.between(-2, 2, -1, 0);
    }

    /* The element that the model delivers next, or none. */
    bool step_model(iterator_pair &pair, int32_t &delivered)
    {
        DA_iterator &model = pair.model;
        const model_array &walked = models_[pair.array];
        const bool forward = model.forward != 0;
        int32_t fetched = -1;
        while (forward ? model.current <= model.last : model.current >= model.last) {
            if (model.current >= 0 && model.current < walked.nitems)
                fetched = model.current;
            model.current += forward ? 1 : -1;
            if (fetched < 0)
                continue;
            const uint8_t first_byte = walked.storage[static_cast<std::size_t>(fetched)][0];
            if (model.test)
                expected_.call("test " + std::to_string(first_byte));
            delivered = fetched;
            if (!model.test || accepts(first_byte))
                return true;
        }
        return false;
    }

    void step_iterator()
    {
        iterator_pair &pair = iterators_[bytes_.below(iterators_.size(), 1)];
        if (!pair.alive)
            return;
        int32_t delivered = 0;
        const bool more = step_model(pair, delivered);
        void *item = this;
        require(DA_next(&pair.real, &item) == (more ? 1 : 0), "next returned another result");
        const model_array &walked = models_[pair.array];
        char *storage = static_cast<char *>(DA_data(arrays_[pair.array]));
        require(item == (more ? storage + walked.bytes_of(delivered) : nullptr), "next stored another item");
    }

    /* ---- comparison ---- */

    void compare() override
    {
        for (std::size_t i = 0; i < arrays_.size(); ++i)
            compare_array(*arrays_[i], models_[i]);
        for (const iterator_pair &pair : iterators_) {
            if (pair.alive)
                compare_iterator(pair.real, pair.model);
        }
        expected_.compare();
    }

    static void compare_array(const DA_array &array, const model_array &model)
    {
        const int broken = broken_invariant(array);
        require(broken == 0, "invariant " + std::to_string(broken) + " is broken");
        require(array.nalloc == model.nalloc() && DA_nalloc(&array) == model.nalloc(), "another capacity");
        require(array.nitems == model.nitems && DA_nitems(&array) == model.nitems, "another length");
        require(array.increment == model.increment, "another increment");
        require(array.element_size == model.element_size, "another element size");
        require(DA_memsize(&array) == model.bytes_of(model.nalloc()), "another size of the storage");
        require(DA_check(&array) == model.bytes_of(model.nalloc()) + 20, "another size");
        require_elements(array.data, model.storage);
    }

    static void compare_iterator(const DA_iterator &real, const DA_iterator &model)
    {
        require(real.array == model.array, "iterator: another array");
        require(real.forward == model.forward, "iterator: another direction");
        require(real.current == model.current, "iterator: another current");
        require(real.last == model.last, "iterator: another last");
        require(real.test == model.test, "iterator: another test");
    }

    plain_code plain_;
    recording_host &host_ = recording_host::get();
    expected_calls expected_;
    std::array<DA_array *, 3> arrays_{};
    std::array<model_array, 3> models_;
    std::array<iterator_pair, 4> iterators_{};
    std::size_t selected_ = 0;
};

[[maybe_unused]] const bool added = add_model<interpreter>("dynamic_array", {150, 1500}, {1500, 40}, {2, 5});

} // namespace

} // namespace mova::test
