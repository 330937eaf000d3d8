/* SPDX-License-Identifier: MIT */
/* The hash table as slow and as plain as it can be: one slot at a time, every step of the rules on its own. It says which
   words the slots of the library's table must hold, and what the host must be asked for. */
#ifndef MOVA_TESTS_MODEL_LITERAL_HASH_TABLE_H
#define MOVA_TESTS_MODEL_LITERAL_HASH_TABLE_H

#include <mova/hash/hash_table.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace mova::test {

/* Numbers the blocks of any number of tables in the order of their allocation, and writes down the calls. */
class literal_memory {
public:
    int alloc(std::size_t size)
    {
        calls_.push_back("alloc " + std::to_string(size) + " = #" + std::to_string(++last_));
        return last_;
    }

    void dealloc(int block, std::size_t size)
    {
        calls_.push_back("dealloc #" + std::to_string(block) + " " + std::to_string(size));
    }

    std::vector<std::string> take_calls() { return std::exchange(calls_, {}); }

private:
    std::vector<std::string> calls_;
    int last_ = 0;
};

class literal_hash_table {
public:
    literal_hash_table(literal_memory &memory, uint32_t initial_size, int32_t maximum_shift)
        : memory_(memory), record_(memory.alloc(sizeof(HSH_table))), maximum_shift_(maximum_shift)
    {
        minimum_size_ = 8;
        if (initial_size >= 9) {
            for (minimum_size_ = 16; static_cast<uint32_t>(minimum_size_) < initial_size;)
                minimum_size_ *= 2;
        }
        allocate(minimum_size_);
    }

    void release()
    {
        memory_.dealloc(key_block_, bytes());
        memory_.dealloc(value_block_, bytes());
        memory_.dealloc(record_, sizeof(HSH_table));
    }

    mova_word set(mova_word key, mova_word value)
    {
        if (key == 0)
            return 0;
        int32_t slot = search(key, true);
        value_at(slot) = value;
        return value;
    }

    mova_word get(mova_word key)
    {
        int32_t slot = search(key, false);
        return slot < 0 ? 0 : value_at(slot);
    }

    bool contains(mova_word key) { return search(key, false) >= 0; }

    bool remove(mova_word key)
    {
        int32_t slot = search(key, false);
        if (slot < 0)
            return false;
        key_at(slot) = 0;
        count_ -= 1;
        if (count_ < low_water_mark_)
            resize(capacity_ / 2);
        else
            repair(slot);
        return true;
    }

    int32_t capacity() const { return capacity_; }
    int32_t count() const { return count_; }
    mova_word key(int32_t slot) const { return keys_[static_cast<std::size_t>(slot)]; }
    mova_word value(int32_t slot) const { return values_[static_cast<std::size_t>(slot)]; }

    /* Whether the library's table is the same in every field and every word of its arrays. */
    bool equals(const HSH_table &table) const
    {
        return table.minimum_size == minimum_size_ && table.capacity == capacity_ && table.count == count_ &&
               table.low_water_mark == low_water_mark_ && table.high_water_mark == high_water_mark_ &&
               table.mask == mask_ && table.shift == shift_ && table.maximum_shift == maximum_shift_ &&
               std::equal(keys_.begin(), keys_.end(), table.keys) &&
               std::equal(values_.begin(), values_.end(), table.values);
    }

private:
    mova_word &key_at(int32_t slot) { return keys_[static_cast<std::size_t>(slot)]; }
    mova_word &value_at(int32_t slot) { return values_[static_cast<std::size_t>(slot)]; }
    std::size_t bytes() const { return keys_.size() * sizeof(mova_word); }

    void allocate(int32_t request)
    {
        capacity_ = 8;
        if (request >= 9 || minimum_size_ >= 9) {
            for (capacity_ = 16; capacity_ < request || capacity_ < minimum_size_;)
                capacity_ *= 2;
        }
        int32_t bits = 0;
        while ((1 << bits) < capacity_)
            ++bits;
        shift_ = maximum_shift_ < 32 - bits ? maximum_shift_ : 32 - bits;
        mask_ = capacity_ - 1;
        low_water_mark_ = minimum_size_ < capacity_ ? capacity_ / 4 : 0;
        high_water_mark_ = 7 * capacity_ / 8;
        count_ = 0;
        keys_.assign(static_cast<std::size_t>(capacity_), 0);
        values_.assign(static_cast<std::size_t>(capacity_), 0);
        key_block_ = memory_.alloc(bytes());
        value_block_ = memory_.alloc(bytes());
    }

    void resize(int32_t request)
    {
        const literal_hash_table old = *this;
        int32_t capacity = 8;
        if (request >= 9 || minimum_size_ > 8 || count_ >= 8) {
            for (capacity = 16; capacity < request || capacity < minimum_size_ || capacity <= count_;)
                capacity *= 2;
        }
        allocate(capacity);
        for (std::size_t slot = 0; slot < old.keys_.size(); ++slot) {
            if (old.keys_[slot] != 0)
                value_at(search(old.keys_[slot], true)) = old.values_[slot];
        }
        memory_.dealloc(old.key_block_, old.bytes());
        memory_.dealloc(old.value_block_, old.bytes());
    }

    int32_t search(mova_word key, bool insert)
    {
        int32_t slot = (static_cast<int32_t>(key) >> shift_) & mask_;
        while (key_at(slot) != 0) {
            if (key_at(slot) == key)
                return slot;
            slot = (slot + 1) & mask_;
        }
        if (!insert)
            return -1;
        if (count_ < high_water_mark_) {
            count_ += 1;
            key_at(slot) = key;
            return slot;
        }
        resize(capacity_ * 2);
        return search(key, true);
    }

    void repair(int32_t hole)
    {
        int32_t end = hole;
        while (key_at((end + 1) & mask_) != 0)
            end = (end + 1) & mask_;
        for (int32_t at = end; at != hole;) {
            mova_word key = key_at(at);
            mova_word value = value_at(at);
            key_at(at) = 0;
            count_ -= 1;
            int32_t slot = search(key, true);
            value_at(slot) = value;
            if (slot == at) {
                at = (at - 1) & mask_;
            } else {
                hole = at;
                at = end;
            }
        }
    }

    literal_memory &memory_;
    int record_, key_block_ = 0, value_block_ = 0;
    int32_t minimum_size_ = 0, capacity_ = 0, count_ = 0, low_water_mark_ = 0, high_water_mark_ = 0, mask_ = 0;
    int32_t shift_ = 0, maximum_shift_;
    std::vector<mova_word> keys_, values_;
};

} // namespace mova::test

#endif
