/* SPDX-License-Identifier: MIT */
/* Operations on a pointer lookup, beside a pair in front of the literal table. After every operation the result,
   the record, each slot of the table, the invariants, the values handed over and the host calls are compared. */
#include "model.h"
#include "hash_keys.h"
#include "literal_hash_table.h"

#include <tests/support/byte_source.h>
#include <tests/support/plain_code.h>
#include <tests/support/recording_host.h>
#include <mova/hash/internal/invariants.h>

#include <iterator>
#include <optional>

namespace mova::test {

namespace {

/* Writes down where the value stands, too: in this record, or elsewhere. */
const mova_lookup *being_released;

std::string release_call(bool in_record, mova_word value)
{
    return (in_record ? "release front " : "release copy ") + std::to_string(value);
}

void write_down_release(mova_word *value)
{
    recording_host::get().write_down(release_call(value == &being_released->front_value, *value));
}

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
            &interpreter::add, &interpreter::add,    &interpreter::add,    &interpreter::add_many,
            &interpreter::get, &interpreter::remove, &interpreter::remove, &interpreter::create_anew,
        };
        do_one_of(operations);
    }

    void finish() override
    {
        release();
        require(host_.live_blocks() == 0, "blocks are left");
        require(host_.take_complaints().empty(), "the host complained");
    }

    bool describe(state_text &state, std::size_t most) const override
    {
        state.add(front_key_, front_value_);
        for (int32_t slot = 0; slot < table_->capacity(); ++slot)
            state.add(table_->key(slot), table_->key(slot) ? table_->value(slot) : 0);
        return table_->capacity() == 8 && static_cast<std::size_t>(table_->count()) <= most;
    }

    mova_word any_key() { return key_(bytes_.is_exhaustive() ? bytes_.between(0, 9) : bytes_.next()); }

    /* ---- operations ---- */

    void create()
    {
        lookup_ = mova_lu_create();
        record_ = memory_.alloc(sizeof(mova_lookup));
        table_.emplace(memory_, 0, 0);
        front_key_ = front_value_ = 0;
    }

    void release()
    {
        require(host_.take_log() == memory_.take_calls(), "other host calls");
        const bool with_callback = bytes_.below(4, 2) != 0;
        std::vector<std::string> expected = with_callback ? releases() : std::vector<std::string>();
        table_->release();
        memory_.dealloc(record_, sizeof(mova_lookup));
        for (std::string &call : memory_.take_calls())
            expected.push_back(std::move(call));
        being_released = lookup_;
        mova_lu_release(&lookup_, with_callback ? write_down_release : nullptr);
        require(!lookup_, "the handle is left");
        require(host_.take_log() == expected, "other calls on release");
    }

    /* The calls of the callback that a release has to make now. */
    std::vector<std::string> releases() const
    {
        std::vector<std::string> calls;
        if (front_value_)
            calls.push_back(release_call(true, front_value_));
        for (int32_t slot = 0; slot < table_->capacity(); ++slot) {
            if (table_->key(slot))
                calls.push_back(release_call(false, table_->value(slot)));
        }
        return calls;
    }

    void create_anew()
    {
        if (bytes_.below(4, 1))
            return;
        release();
        create();
    }

    void add_one(mova_word key, mova_word value)
    {
        const mova_word pushed = front_key_ ? table_->set(front_key_, front_value_) : 0;
        front_key_ = key;
        front_value_ = value;
        require(mova_lu_add(lookup_, key, value) == pushed, "add returned another value");
    }

    void add()
    {
        const mova_word key = any_key();
        add_one(key, bytes_.is_exhaustive() ? key % 3 : static_cast<mova_word>(bytes_.below(16)) - 4);
    }

    void add_many()
    {
        if (bytes_.is_exhaustive())
            return;
        const mova_word first = bytes_.next();
        for (mova_word number = first; number < first + 16; ++number)
            add_one(key_(number), number);
    }

    void get()
    {
        const mova_word key = any_key();
        const mova_word expected = key == front_key_ ? front_value_ : table_->get(key);
        require(mova_lu_get(lookup_, key) == expected, "get returned another value");
    }

    void remove()
    {
        const mova_word key = bytes_.below(4, 2) ? any_key() : front_key_;
        if (key == front_key_)
            front_key_ = front_value_ = 0;
        else
            table_->remove(key);
        mova_lu_remove(lookup_, key);
    }

    /* ---- comparison ---- */

    void compare() override
    {
        require(lookup_->front_key == front_key_, "another key in front");
        require(lookup_->front_value == front_value_, "another value in front");
        require(table_->equals(*lookup_->table), "another record or slot of the table");
        const int broken = broken_invariant(*lookup_);
        require(broken == 0, "invariant " + std::to_string(broken) + " is broken");
        require(host_.take_log() == memory_.take_calls(), "other host calls");
    }

    plain_code plain_;
    key_shape key_;
    recording_host &host_ = recording_host::get();
    literal_memory memory_;
    mova_lookup *lookup_ = nullptr;
    int record_ = 0;
    mova_word front_key_ = 0, front_value_ = 0;
    std::optional<literal_hash_table> table_;
};

[[maybe_unused]] const bool added = add_model<interpreter>("pointer_lookup", {60, 2000}, {2000, 40}, {3, 5});

} // namespace

} // namespace mova::test
