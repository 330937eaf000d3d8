/* SPDX-License-Identifier: MIT */
/* Keyed table: records of any type, found by a key inside them. Strings first of all.

       struct country {
           std::string name;
           int visits;
       };
       mova::keyed_table<country, &country::name> countries;
       countries.insert({"France", 3});
       if (country *found = countries.find("France"))          no std::string is made for that
           ++found->visits;

   The records lie in a dynamic array, in the order of their insertion until one is removed. A hash table leads from the hash
   of a key to the last record with that hash; records with equal hashes are chained, last to first.

       hash table            records                         links
       hash     index+1      +---------------------+         +-------------+
       0x51d0   3 ---------> | 2  Norway    1      |         | 0x51d0   0 -|--> 0: another key with the hash 0x51d0
       0x88e2   2 ------.    | 0  France    3      |         | 0x51d0   .  |
                        `--> | 1  Italy     0      |         | 0x88e2   .  |
                             +---------------------+         +-------------+

   The key of a record that is in the table must not change. What edits do to records:

       edit            pointers, iterators                          order
       insert          die where the array grows                    the new one is the last
       remove          that one's and the last one's die            the last record takes the place
       clear           die                                          -

   As a range the table delivers its records, contiguous and sized: std::span and the algorithms that do not change keys
   apply.

   Hash takes what may be looked for and returns a number; Equal compares two keys. Either may have state. `KeyOf` is a member,
   or anything without state that std::invoke takes.

   Ownership: the table owns its records. A table that was moved from, or made, has no memory, and can be used: its functions are
   copied where it is moved. Errors: what
   the memory service, the hash or the comparison throw; the table is then as it was. Moving a record never throws: records
   that might are refused.

   Cost: constant, where a growth does not make it linear; it doubles. */
#ifndef MOVA_CXX_KEYED_TABLE_H
#define MOVA_CXX_KEYED_TABLE_H

#include <cstdint>
#include <cstring>
#include <functional>
#include <span>
#include <string_view>

#include <mova/cxx/dynamic_array.h>
#include <mova/hash/hash_table.h>

namespace mova {

/* A hash of strings that is compiled into the caller: eight bytes at a time, each step of which can be undone, so that no byte is
   lost. It guards against nobody who looks for strings of equal hashes. */
class text_hash {
public:
    /* The hash of a text. */
    static std::uint64_t of(std::string_view text) noexcept
    {
        const char *at = text.data();
        std::size_t left = text.size();
        std::uint64_t hash = left * factor;
        for (; left > 8; at += 8, left -= 8)
            hash = mixed(hash, word_at<std::uint64_t>(at));
        return mixed(hash, text.size() < 8 ? short_text(at, left) : word_at<std::uint64_t>(at + left - 8));
    }

    /* What each step multiplies by: odd, so that the step can be undone. */
    static constexpr std::uint64_t factor = 0x9E3779B97F4A7C15u;

private:
    template <class Word>
    static std::uint64_t word_at(const char *at) noexcept
    {
        Word word;
        std::memcpy(&word, at, sizeof word);
        return word;
    }
    static std::uint64_t short_text(const char *at, std::size_t n) noexcept
    {
        if (n >= 4)
            return word_at<std::uint32_t>(at) | word_at<std::uint32_t>(at + n - 4) << 32;
        if (n == 0)
            return 0;
        return word_at<unsigned char>(at) | word_at<unsigned char>(at + n / 2) << 8 |
               word_at<unsigned char>(at + n - 1) << 16;
    }
    static std::uint64_t mixed(std::uint64_t hash, std::uint64_t word) noexcept
    {
        hash = (hash ^ word) * factor;
        return hash ^ hash >> 32;
    }
};

/* std::hash, but for strings: text_hash, the same number for all that are strings of characters. */
struct key_hash {
    /* Of a text. */
    std::uint64_t operator()(std::string_view text) const noexcept { return text_hash::of(text); }
    /* Of anything else that std::hash takes. */
    template <class Key>
    requires(!std::convertible_to<const Key &, std::string_view> &&
             requires(const Key &key) { std::hash<Key>()(key); }) std::uint64_t
    operator()(const Key &key) const noexcept(noexcept(std::hash<Key>()(key)))
    {
        return std::hash<Key>()(key);
    }
};

/* A table of records, which it owns, by a key inside them. */
template <class Record, auto KeyOf, class Hash = key_hash, class Equal = std::equal_to<>>
class keyed_table {
    static_assert(
        std::is_nothrow_destructible_v<Record> && std::is_nothrow_move_constructible_v<Record>,
        "mova::keyed_table: records are moved when the table grows, which must not fail: give the record a move "
        "constructor that is noexcept, or store std::unique_ptr to it");
    static_assert(alignof(Record) <= alignof(std::max_align_t),
                  "mova::keyed_table: the memory service does not align so much: store std::unique_ptr to the record");

public:
    using value_type = Record;
    using iterator = Record *;
    using const_iterator = const Record *;

    keyed_table() = default;
    /* Empty, with functions of the caller's. */
    explicit keyed_table(Hash hash, Equal equal = {}) : hash_(std::move(hash)), equal_(std::move(equal)) {}
    template <range_of<keyed_table, Record> Range>
    requires(!std::convertible_to<Range, Hash>) explicit keyed_table(Range &&records) : keyed_table()
    {
        for (auto &&each : records)
            insert(Record(std::forward<decltype(each)>(each)));
    }
    keyed_table(keyed_table &&other) noexcept(copies_quietly)
        : hash_(other.hash_), equal_(other.equal_), records_(std::move(other.records_)),
          links_(std::move(other.links_)), heads_(std::move(other.heads_))
    {
    }
    keyed_table &operator=(keyed_table &&other) noexcept(copies_quietly)
    {
        keyed_table taken(std::move(other));
        std::swap(records_, taken.records_);
        std::swap(links_, taken.links_);
        std::swap(heads_, taken.heads_);
        std::swap(hash_, taken.hash_);
        std::swap(equal_, taken.equal_);
        return *this;
    }
    ~keyed_table() { destroy_records(); }

    Record *begin() noexcept { return at(0); }
    Record *end() noexcept { return at(size()); }
    const Record *begin() const noexcept { return at(0); }
    const Record *end() const noexcept { return at(size()); }
    Record *data() noexcept { return at(0); }
    const Record *data() const noexcept { return at(0); }
    std::size_t size() const noexcept { return links_.size(); }
    bool empty() const noexcept { return size() == 0; }

    /* The record with that key, or null. */
    template <class Key>
    Record *find(const Key &key)
    {
        return at_or_null(index_of(key, hash_word(key)));
    }
    template <class Key>
    const Record *find(const Key &key) const
    {
        return at_or_null(index_of(key, hash_word(key)));
    }
    template <class Key>
    bool contains(const Key &key) const
    {
        return find(key) != nullptr;
    }

    /* Adds the record, unless there is one with its key. Returns where it is, or that other one, and whether it was
       added. */
    std::pair<Record *, bool> insert(Record record)
    {
        const mova_word hash = hash_word(key_of(record));
        if (const std::size_t found = index_of(key_of(record), hash); found != none)
            return {at(found), false};
        make_room();
        const std::size_t index = size();
        const std::size_t next = head_of(hash);
        ::new (static_cast<void *>(at(index))) Record(std::move(record));
        set_head(hash, index, at(index));
        links_.append({hash, next});
        return {at(index), true};
    }

    /* Removes the record with that key. Returns whether there was one. */
    template <class Key>
    bool remove(const Key &key)
    {
        const std::size_t index = index_of(key, hash_word(key));
        if (index != none)
            remove_at(index);
        return index != none;
    }

    /* Removes all records. Keeps the storage of the array. Linear. */
    void clear() noexcept
    {
        destroy_records();
        if (links_)
            links_.clear();
        heads_.reset();
    }

    /* Whether both have the same records, in whatever order. */
    friend bool operator==(const keyed_table &a, const keyed_table &b)
    {
        if (a.size() != b.size())
            return false;
        for (const Record &each : a) {
            const Record *other = b.find(key_of(each));
            if (!other || !(*other == each))
                return false;
        }
        return true;
    }

private:
    static constexpr bool copies_quietly =
        std::is_nothrow_copy_constructible_v<Hash> && std::is_nothrow_copy_constructible_v<Equal>;
    static constexpr std::size_t none = static_cast<std::size_t>(-1);
    static constexpr std::int32_t least = 8;

    struct link {
        mova_word hash;
        std::size_t next; /* the record with the same hash that was added before, or none */
    };

    static decltype(auto) key_of(const Record &record) { return std::invoke(KeyOf, record); }

    /* Whether such a key can be looked for. */
    template <class Key>
    static constexpr bool is_known()
    {
        constexpr bool hashes = std::invocable<const Hash &, const Key &>;
        constexpr bool compares =
            std::invocable<const Equal &, decltype(key_of(std::declval<Record &>())), const Key &>;
        static_assert(
            hashes && compares,
            "mova::keyed_table: such a key cannot be looked for: give the table a class whose operator() const takes "
            "the key and returns a number, and where it has no == of its own, one that compares two keys, as in "
            "keyed_table<record, &record::key, hash, equal>");
        return hashes && compares;
    }

    /* Spread over all bits: the hash table takes a slot from the low ones, and std::hash of a number is the number. */
    template <class Key>
    mova_word hash_word(const Key &key) const
    {
        if constexpr (is_known<Key>()) {
            const std::uint64_t product = std::uint64_t{hash_(key)} * text_hash::factor;
            const mova_word word = static_cast<mova_word>(product ^ product >> 32);
            return word ? word : 1;
        }
        return 1;
    }

    Record *at(std::size_t index) const noexcept
    {
        return records_ ? static_cast<Record *>(records_->data) + index : nullptr;
    }
    Record *at_or_null(std::size_t index) const noexcept { return index == none ? nullptr : at(index); }

    /* The index of the record that was added last of those with the hash. */
    std::size_t head_of(mova_word hash) const noexcept
    {
        if (!heads_)
            return none;
        const std::size_t slot = mova_hsh_slot_and_value(heads_.get(), hash);
        return static_cast<std::size_t>(heads_->keys[slot] ? heads_->values[slot] : 0) - 1;
    }

    /* A hash that is stored leads to another index now. */
    void change_head(mova_word hash, std::size_t index) noexcept
    {
        heads_->values[mova_hsh_slot(heads_.get(), hash)] = static_cast<mova_word>(index + 1);
    }

    template <class Key>
    std::size_t index_of(const Key &key, mova_word hash) const
    {
        std::size_t index = head_of(hash);
        if constexpr (is_known<Key>()) {
            while (index != none && !equal_(key_of(*at(index)), key))
                index = links_[index].next;
        }
        return index;
    }

    /* Leaves the new record out where there is no memory for its entry. */
    void set_head(mova_word hash, std::size_t index, Record *added)
    {
        struct leave_out {
            Record *record;
            ~leave_out()
            {
                if (record)
                    record->~Record();
            }
        } guard = {added};
        HSH_set_value(heads_.get(), hash, static_cast<mova_word>(index + 1));
        guard.record = nullptr;
    }

    /* Makes room for one record more, in all three. */
    void make_room()
    {
        if (!heads_)
            heads_.reset(HSH_create(0, 0));
        if (!links_)
            links_ = dynamic_array<link>(least);
        if (links_.size() == links_.capacity())
            links_.reserve(2 * links_.size());
        if (!records_ || size() == static_cast<std::size_t>(records_->nalloc))
            grow_records();
    }

    void grow_records()
    {
        storage grown(DA_create(sizeof(Record), least));
        DA_extend(grown.get(), static_cast<std::int32_t>(2 * size()));
        Record *target = static_cast<Record *>(grown->data);
        if constexpr (std::is_trivially_copyable_v<Record>) {
            if (!empty())
                std::memcpy(static_cast<void *>(target), at(0), size() * sizeof(Record));
        } else {
            for (std::size_t i = 0; i < size(); ++i) {
                ::new (static_cast<void *>(target + i)) Record(std::move(*at(i)));
                at(i)->~Record();
            }
        }
        records_ = std::move(grown);
    }

    void remove_at(std::size_t index)
    {
        unlink(index);
        const std::size_t last = size() - 1;
        if (index != last) {
            relink(last, index);
            at(index)->~Record();
            ::new (static_cast<void *>(at(index))) Record(std::move(*at(last)));
            links_[index] = links_[last];
        }
        at(last)->~Record();
        links_.truncate(last);
    }

    /* Takes a record out of the chain of its hash. */
    void unlink(std::size_t index)
    {
        const link removed = links_[index];
        const std::size_t head = head_of(removed.hash);
        if (head != index)
            before(head, index).next = removed.next;
        else if (removed.next == none)
            HSH_remove_entry(heads_.get(), removed.hash);
        else
            change_head(removed.hash, removed.next);
    }

    /* What leads to one record shall lead to another index. The hash is stored: nothing grows. */
    void relink(std::size_t from, std::size_t to)
    {
        const std::size_t head = head_of(links_[from].hash);
        if (head == from)
            change_head(links_[from].hash, to);
        else
            before(head, from).next = to;
    }

    link &before(std::size_t head, std::size_t index) noexcept
    {
        while (links_[head].next != index)
            head = links_[head].next;
        return links_[head];
    }

    void destroy_records() noexcept
    {
        for (Record &each : *this)
            each.~Record();
    }

    using storage = std::unique_ptr<DA_array, release_dynamic_array>;

    /* First: where they cannot be copied, the other table keeps its records. */
    [[no_unique_address]] kept_function<Hash> hash_;
    [[no_unique_address]] kept_function<Equal> equal_;
    storage records_;
    dynamic_array<link> links_{nullptr};
    std::unique_ptr<HSH_table, release_by<HSH_release>> heads_;
};

} // namespace mova

#endif
