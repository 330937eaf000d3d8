/* SPDX-License-Identifier: MIT */
/* Operations on a hash table and an iterator, beside the literal table and a standard map. After every operation
   the result, each field and slot of the table, its invariants, the iterator and the host calls are compared. */
#include "model.h"
#include "hash_keys.h"
#include "literal_hash_table.h"

#include <tests/support/byte_source.h>
#include <tests/support/plain_code.h>
#include <tests/support/recording_host.h>
#include <mova/hash/internal/invariants.h>

#include <iterator>
#include <optional>
#include <unordered_map>

namespace mova::test {

namespace {

class interpreter : public byte_interpreter {
public:
    explicit interpreter(byte_source bytes)
        : byte_interpreter(bytes), plain_(bytes_.below(2, 1) == 0), key_(key_shapes[bytes_.below(key_shapes.size(), 1)])
    {
        host_.reset();
        create();
    }

private:
    using operation = void (interpreter::*)();

    void operate() override
    {
        static constexpr operation operations[] = {
            &interpreter::set,      &interpreter::set,         &interpreter::set,    &interpreter::set,
            &interpreter::remove,   &interpreter::remove,      &interpreter::remove, &interpreter::remove,
            &interpreter::set_many, &interpreter::remove_many, &interpreter::get,    &interpreter::contains,
            &interpreter::iterate,  &interpreter::step,        &interpreter::step,   &interpreter::create_anew,
        };
        do_one_of(operations);
    }

    void finish() override
    {
        compare_all_entries();
        release();
        compare_calls();
        require(host_.live_blocks() == 0, "blocks are left");
        require(host_.take_complaints().empty(), "the host complained");
    }

    /* Where every small case is tried the table has 8 slots, and each value is its key. The iterator may stand anywhere. */
    bool describe(state_text &state, std::size_t most) const override
    {
        state.add(literal_->capacity());
        for (int32_t slot = 0; slot < literal_->capacity(); ++slot)
            state.add(literal_->key(slot));
        return literal_->capacity() == 8 && static_cast<std::size_t>(literal_->count()) <= most;
    }

    /* Two for each home in 8 slots, and none. */
    mova_word any_key() { return key_(bytes_.is_exhaustive() ? bytes_.between(0, 16) : bytes_.next()); }

    /* ---- operations ---- */

    void create()
    {
        const auto size = static_cast<uint32_t>(bytes_.below(41, 1));
        const auto shift = static_cast<int32_t>(bytes_.below(41, 1));
        table_ = HSH_create(size, shift);
        literal_.emplace(memory_, size, shift);
        map_.clear();
        iterate();
    }

    void release()
    {
        HSH_release(&table_);
        require(!table_, "the handle is left");
        literal_->release();
    }

    void create_anew()
    {
        if (bytes_.below(8, 1))
            return;
        compare_all_entries();
        release();
        create();
    }

    void set_one(mova_word key, mova_word value)
    {
        const mova_word result = HSH_set_value(table_, key, value);
        require(result == literal_->set(key, value), "set returned another value");
        if (key)
            map_[key] = value;
    }

    void remove_one(mova_word key)
    {
        const bool stored = map_.erase(key) == 1;
        const int result = HSH_remove_entry(table_, key);
        require(stored ? result >= 0 : result == -1, "remove returned another result");
        require(literal_->remove(key) == stored, "the literal table and the map differ");
    }

    void set()
    {
        const mova_word key = any_key();
        set_one(key, bytes_.is_exhaustive() ? key : static_cast<int8_t>(bytes_.next()));
    }

    void remove() { remove_one(any_key()); }

    void set_many()
    {
        if (bytes_.is_exhaustive())
            return;
        const mova_word first = bytes_.next();
        for (mova_word number = first; number < first + 16; ++number)
            set_one(key_(number), number);
    }

    void remove_many()
    {
        if (bytes_.is_exhaustive())
            return;
        const mova_word first = bytes_.next();
        for (mova_word number = first; number < first + 16; ++number)
            remove_one(key_(number));
    }

    void get()
    {
        const mova_word key = any_key();
        auto stored = map_.find(key);
        const mova_word value = HSH_get_value(table_, key);
        require(value == (stored == map_.end() ? 0 : stored->second), "get returned another value");
        require(value == literal_->get(key), "the literal table and the map differ");
    }

    void contains()
    {
        const mova_word key = any_key();
        require(HSH_contains_key(table_, key) == (map_.contains(key) ? 1 : 0), "contains returned another result");
    }

    void iterate()
    {
        iterator_ = HSH_all_entries(table_);
        index_ = literal_->count() ? 0 : literal_->capacity();
    }

    /* Where the table was edited since the iterator was made, it goes on from its index all the same. */
    void step()
    {
        mova_word key = -1, value = -2;
        if (bytes_.is_exhaustive())
            index_ = iterator_.index = bytes_.between(0, literal_->capacity());
        while (index_ < literal_->capacity() && !literal_->key(index_))
            ++index_;
        const bool more = index_ < literal_->capacity();
        require(HSH_next(&iterator_, &key, &value) == (more ? 1 : 0), "next returned another result");
        require(key == (more ? literal_->key(index_) : -1), "next stored another key");
        require(value == (more ? literal_->value(index_) : -2), "next stored another value");
        index_ += more ? 1 : 0;
    }

    /* ---- comparison ---- */

    void compare() override
    {
        require(literal_->equals(*table_), "another record or slot");
        require(static_cast<std::size_t>(table_->count) == map_.size(), "another count");
        const int broken = broken_invariant(*table_);
        require(broken == 0, "invariant " + std::to_string(broken) + " is broken");
        require(iterator_.table == table_ && iterator_.index == index_, "another iterator");
        compare_calls();
    }

    void compare_calls() { require(host_.take_log() == memory_.take_calls(), "other host calls"); }

    void compare_all_entries()
    {
        std::unordered_map<mova_word, mova_word> delivered;
        HSH_iterator iterator = HSH_all_entries(table_);
        for (mova_word key = 0, value = 0; HSH_next(&iterator, &key, &value);)
            require(delivered.emplace(key, value).second, "an entry was delivered twice");
        require(delivered == map_, "other entries");
    }

    plain_code plain_;
    key_shape key_;
    recording_host &host_ = recording_host::get();
    literal_memory memory_;
    HSH_table *table_ = nullptr;
    std::optional<literal_hash_table> literal_;
    std::unordered_map<mova_word, mova_word> map_;
    HSH_iterator iterator_{};
    int32_t index_ = 0;
};

[[maybe_unused]] const bool added = add_model<interpreter>("hash_table", {60, 1500}, {4000, 40}, {3, 6});

} // namespace

} // namespace mova::test
