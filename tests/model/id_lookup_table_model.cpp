/* SPDX-License-Identifier: MIT */
/* Operations on a table, beside a vector of words. After every operation the result, the whole storage, the
   invariants, the raises and the host calls are compared. */
#include "expected_calls.h"
#include "model.h"

#include <mova/arrays/id_lookup_table.h>

#include <tests/support/plain_code.h>
#include <tests/support/array_storage.h>

#include <array>

namespace mova::test {

namespace {

constexpr int32_t increment = 1024;
constexpr int32_t line_of_get_id = 108, line_of_set = 140, line_of_get_ptr = 155;

/* Never read. */
std::array<char, 8> things;

class interpreter : public byte_interpreter {
public:
    explicit interpreter(byte_source bytes) : byte_interpreter(bytes), plain_(bytes_.below(2, 1) == 0) { create(); }

private:
    using operation = void (interpreter::*)();

    void operate() override
    {
        static constexpr operation operations[] = {
            &interpreter::add,
            &interpreter::add,
            &interpreter::set,
            &interpreter::set,
            &interpreter::set_far,
            &interpreter::get_id,
            &interpreter::get_id,
            &interpreter::look_id,
            &interpreter::get_ptr,
            &interpreter::get_ptr,
            &interpreter::look_ptr,
            &interpreter::look_ptr,
            &interpreter::iterate,
            &interpreter::rarely_allow_reuse,
            &interpreter::rarely_start_again,
            &interpreter::shorten,
        };
        do_one_of(operations);
    }

    void finish() override
    {
        release();
        expected_.require_nothing_left();
    }

    bool describe(state_text &state, std::size_t most) const override
    {
        state.add(nitems_, nalloc(), reuse_allowed());
        for (int32_t id = 1; id < std::min(nitems_, increment); ++id)
            state.add(word(id) ? static_cast<char *>(word(id)) - things.data() : -1);
        return static_cast<std::size_t>(nitems_) <= most + 1 && nalloc() == increment;
    }

    /* ---- what the operations choose ---- */

    void *any_pointer()
    {
        const std::size_t count = bytes_.is_exhaustive() ? 2 : things.size(), chosen = bytes_.below(count + 1);
        return chosen < count ? &things[chosen] : nullptr;
    }

    int32_t any_id()
    {
        return static_cast<int32_t>(bytes_.below(static_cast<std::size_t>(nitems_ % 200) + 6)) + nitems_ / 200 * 200;
    }

    /* ---- the model ---- */

    void *word(int32_t index) const { return words_[static_cast<std::size_t>(index)]; }
    bool reuse_allowed() const { return reinterpret_cast<uintptr_t>(word(0)) % 2 == 1; }
    int32_t nalloc() const { return static_cast<int32_t>(words_.size()); }
    void *pointer_of(int32_t id) const { return id > 0 && id < nitems_ ? word(id) : nullptr; }

    int32_t id_of(const void *pointer) const
    {
        const auto end = words_.begin() + nitems_;
        const auto found = std::find(words_.begin() + 1, end, pointer);
        return found == end ? 0 : static_cast<int32_t>(found - words_.begin());
    }

    void expect_extension(int32_t n)
    {
        const auto target = static_cast<std::size_t>(n / increment + 1) * increment;
        if (words_.empty())
            expected_.alloc(target * sizeof(void *));
        else
            expected_.realloc(host_.name_of(DA_data(table_)), words_.size() * sizeof(void *), target * sizeof(void *));
        words_.resize(target);
    }

    /* ---- operations ---- */

    void create()
    {
        words_.clear();
        expected_.alloc(sizeof(DA_array));
        expect_extension(1);
        nitems_ = 1;
        table_ = io_lut_create();
    }

    void release()
    {
        expected_.dealloc(DA_data(table_), words_.size() * sizeof(void *));
        expected_.dealloc(table_, sizeof(DA_array));
        io_lut_release(&table_);
        require(!table_, "release left the variable");
    }

    void rarely_start_again()
    {
        if (bytes_.below(8, 1) > 0)
            return;
        release();
        create();
    }

    void rarely_allow_reuse()
    {
        if (bytes_.below(8, 1) > 0)
            return;
        words_[0] = reinterpret_cast<void *>(uintptr_t{1});
        io_lut_allow_reuse(table_);
    }

    void add()
    {
        void *pointer = any_pointer();
        if (nalloc() < nitems_ + 1)
            expect_extension(nitems_ + 1);
        words_[static_cast<std::size_t>(nitems_)] = pointer;
        require(io_lut_add(table_, pointer) == nitems_, "added under another id");
        ++nitems_;
    }

    void set() { set_id(any_id() + 1); }

    void set_far() { set_id(nitems_ + 8 * bytes_.between(0, 255, 127, 128)); }

    void set_id(int32_t id)
    {
        void *pointer = any_pointer();
        const bool raises = !reuse_allowed() && id < nitems_ && word(id) != pointer;
        const bool throws = bytes_.below(2) == 1;
        if (raises)
            expected_.raise("plut", line_of_set, MOVA_PRECONDITION_BROKEN);
        if (!raises || !throws) {
            if (id >= nalloc())
                expect_extension(id + 1);
            words_[static_cast<std::size_t>(id)] = pointer;
            nitems_ = std::max(nitems_, id + 1);
        }
        expected_.returns_from(raises, throws, [&] { io_lut_set(table_, pointer, id); });
    }

    void get_id()
    {
        void *pointer = any_pointer();
        const int32_t id = id_of(pointer);
        int32_t got = id;
        if (id == 0)
            expected_.raise("plut", line_of_get_id, MOVA_ID_NOT_FOUND);
        expected_.returns_from(id == 0, bytes_.below(2) == 1, [&] { got = io_lut_get_id(table_, pointer); });
        require(got == id, "got another id");
    }

    void look_id()
    {
        void *pointer = any_pointer();
        require(io_lut_look_id(table_, pointer) == id_of(pointer), "found another id");
    }

    void get_ptr()
    {
        const int32_t id = any_id();
        void *got = nullptr;
        const bool raises = !pointer_of(id);
        if (raises)
            expected_.raise("plut", line_of_get_ptr, MOVA_ID_NOT_FOUND);
        if (expected_.returns_from(raises, bytes_.below(2) == 1, [&] { got = io_lut_get_ptr(table_, id); }))
            require(got == (id < nalloc() ? word(id) : nullptr), "got another pointer");
    }

    void look_ptr()
    {
        const int32_t id = any_id() - 2;
        require(io_lut_look_ptr(table_, id) == pointer_of(id), "found another pointer");
    }

    void iterate()
    {
        io_lut_iterator iterator = io_lut_all_items(table_);
        for (int32_t id = 1; id < nitems_; ++id) {
            if (!word(id))
                continue;
            require(io_lut_next_item(&iterator) == word(id), "delivered another pointer");
            require(iterator.next == id + 1, "the iterator stands elsewhere");
        }
        require(!io_lut_next_item(&iterator), "delivered too much");
        require(iterator.next == nitems_ && iterator.count == nitems_, "the iterator ended elsewhere");
    }

    /* As the dynamic array that it is: what came after stays in the storage. */
    void shorten()
    {
        nitems_ = 1 + static_cast<int32_t>(bytes_.below(static_cast<std::size_t>(std::min(nitems_, 250))));
        DA_truncate(table_, nitems_);
    }

    /* ---- comparison ---- */

    void compare() override
    {
        const int broken = broken_invariant_of_table(*table_);
        require(broken == 0, "invariant " + std::to_string(broken) + " is broken");
        require(DA_nitems(table_) == nitems_, "another length");
        require(DA_nalloc(table_) == nalloc(), "another capacity");
        const auto *words = static_cast<void *const *>(DA_data(table_));
        require(std::equal(words_.begin(), words_.end(), words), "other words");
        expected_.compare();
    }

    plain_code plain_;
    recording_host &host_ = recording_host::get();
    expected_calls expected_;
    DA_array *table_ = nullptr;
    std::vector<void *> words_; /* as many as are allocated */
    int32_t nitems_ = 0;
};

[[maybe_unused]] const bool added = add_model<interpreter>("id_lookup_table", {60, 1500}, {600, 40}, {3, 5});

} // namespace

} // namespace mova::test
