/* SPDX-License-Identifier: MIT */
/* Operations on a swap cache whose pool has a budget that they choose, and moves every block at every allocation.
   Some write-backs make their own entry the first. After every operation the result, the order and the fields of the
   entries, every body's bytes, what was written back, and all callbacks, host calls and traces are compared with a
   model. */
#include "expected_calls.h"
#include "model.h"

#include <tests/support/byte_source.h>
#include <tests/support/recording_host.h>
#include <mova/cache/internal/invariants.h>

#include <mova/cache/swap_cache.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>
#include <string>
#include <vector>

namespace mova::test {

namespace {

/* What the callbacks see of an item: where it saves its body, and what they are to do beside that. */
struct item {
    char name = 0;
    uint32_t size = 0;
    std::string saved;
    bool moves_itself = false;
    cc_cache *cache = nullptr;
    cc_entry *entry = nullptr;
};

item &item_of(void *pointer)
{
    return *static_cast<item *>(pointer);
}

void write_down(const std::string &call)
{
    recording_host::get().write_down(call);
}

uint32_t size_of(void *pointer)
{
    write_down(std::string("size ") + item_of(pointer).name);
    return item_of(pointer).size;
}

void swap_in(void *pointer, void *block, uint32_t size)
{
    write_down(std::string("swap_in ") + item_of(pointer).name + " " + std::to_string(size));
    std::copy_n(item_of(pointer).saved.data(), size, static_cast<char *>(block));
}

void write_back(void *pointer, void *block)
{
    item &saved = item_of(pointer);
    write_down(std::string("write_back ") + saved.name);
    saved.saved.assign(static_cast<const char *>(block), saved.size);
    if (saved.moves_itself)
        cc_lazy_swap_out(saved.cache, saved.entry);
}

void release(void *pointer)
{
    write_down(std::string("release ") + item_of(pointer).name);
}

std::string hexadecimal(const void *address)
{
    char digits[9];
    std::snprintf(digits, sizeof digits, "%8X", static_cast<unsigned>(reinterpret_cast<uintptr_t>(address)));
    return digits;
}

/* An entry as it should be. */
struct model_entry {
    item *registered;
    int block; /* 0 while the body is out */
    bool dirty;
    std::string body, saved;
};

struct held_block {
    mb_handle handle;
    int block;
    std::size_t size;
};

class interpreter : public byte_interpreter {
public:
    explicit interpreter(byte_source bytes) : byte_interpreter(bytes)
    {
        cc_debug = 0;
        budget_ = bytes_.is_exhaustive() ? small_body * (1 + 2 * bytes_.below(2)) + 5 : bytes_.next();
        host_.pool().set_budget(budget_);
        expected_.alloc(sizeof(cc_cache));
        cache_ = cc_create(host_.pool().address());
        for (std::size_t i = 0; i < items_.size(); ++i)
            items_[i].name = static_cast<char>('A' + i);
    }

private:
    using operation = void (interpreter::*)();
    using model_list = std::vector<model_entry>;

    void operate() override
    {
        static constexpr operation operations[] = {
            &interpreter::insert_out,
            &interpreter::insert_out,
            &interpreter::insert_dirty,
            &interpreter::insert_dirty,
            &interpreter::insert_dirty,
            &interpreter::get,
            &interpreter::get,
            &interpreter::get,
            &interpreter::get,
            &interpreter::get,
            &interpreter::scribble,
            &interpreter::lazy_swap_out,
            &interpreter::lazy_swap_out,
            &interpreter::swap_out,
            &interpreter::swap_out,
            &interpreter::flush,
            &interpreter::take,
            &interpreter::free_held,
            &interpreter::remove,
            &interpreter::remove,
            &interpreter::report,
            &interpreter::set_debug,
            &interpreter::set_raise_mode,
            &interpreter::empty_sometimes,
        };
        do_one_of(operations);
    }

    void finish() override
    {
        while (!held_.empty())
            free_held();
        make_empty();
        compare();
        expected_.dealloc(cache_, sizeof(cc_cache));
        MM_dealloc_item(cache_, sizeof(cc_cache));
        expected_.require_nothing_left();
        require(host_.pool().live_blocks() == 0, "blocks of the pool are left");
        cc_debug = 0;
    }

    /* Where every small case is tried there are few entries, and fewer where a trace is on or raises are returned from.
       What a body holds makes no difference. */
    bool describe(state_text &state, std::size_t most) const override
    {
        state.add(budget_, cc_debug, throws_, entries_.size());
        for (const model_entry &entry : entries_)
            state.add(entry.registered->size, entry.registered->moves_itself, entry.block != 0, entry.dirty);
        for (const held_block &held : held_)
            state.add(held.size);
        const bool is_plain = throws_ && cc_debug == 0;
        return entries_.size() <= (is_plain ? most : 1) && held_.size() <= 1;
    }

    /* A body is of one or two of these. */
    static constexpr std::size_t small_body = 10;
    std::size_t any_size() { return bytes_.is_exhaustive() ? small_body * (1 + bytes_.below(2)) : bytes_.below(64); }

    /* ---- the model ---- */

    std::size_t any_index() { return bytes_.below(entries_.size()); }

    std::size_t index_of(const item *registered) const
    {
        auto found = std::ranges::find(entries_, registered, &model_entry::registered);
        return static_cast<std::size_t>(found - entries_.begin());
    }

    void make_first(std::size_t index)
    {
        auto moved = entries_.begin() + static_cast<std::ptrdiff_t>(index);
        std::rotate(entries_.begin(), moved, moved + 1);
    }

    static std::string name_of(int block) { return "b" + std::to_string(block); }

    void expect_trace(const std::string &text)
    {
        if (cc_debug)
            expected_.call("dprintf " + text + "\n");
    }

    /* Returns the new block's number, or 0. */
    int expect_mb_alloc(std::size_t size)
    {
        const bool fits = size <= budget_ - used_;
        if (fits) {
            used_ += size;
            ++last_block_;
        }
        expected_.call("mb_alloc " + std::to_string(size) + " = " + (fits ? name_of(last_block_) : "0"));
        return fits ? last_block_ : 0;
    }

    void expect_mb_free(int block, std::size_t size)
    {
        expected_.call("mb_free " + name_of(block));
        used_ -= size;
    }

    void expect_write_back(const item *evicted)
    {
        model_entry &entry = entries_[index_of(evicted)];
        expected_.call("mb_get " + name_of(entry.block));
        expected_.call(std::string("write_back ") + evicted->name);
        entry.saved = entry.body;
        entry.dirty = false;
        if (evicted->moves_itself)
            make_first(index_of(evicted));
    }

    /* Returns the index of the next entry of a walk. */
    std::size_t expect_eviction(std::size_t index)
    {
        const item *evicted = entries_[index].registered;
        if (entries_[index].dirty)
            expect_write_back(evicted);
        model_entry &entry = entries_[index_of(evicted)];
        if (entry.block)
            expect_mb_free(entry.block, evicted->size);
        entry.block = 0;
        return index_of(evicted) + 1;
    }

    int expect_cc_alloc(std::size_t size)
    {
        int block = expect_mb_alloc(size);
        for (std::size_t i = 0; !block && i < entries_.size();) {
            i = expect_eviction(i);
            block = expect_mb_alloc(size);
        }
        if (!block)
            expected_.raise("cache", 334, 4197);
        return block;
    }

    /* ---- operations ---- */

    /* Calls `allocate`, which is to return a result that is zero, or to raise, where it is to fail. */
    template <class Allocate>
    auto call(Allocate allocate, bool fails)
    {
        decltype(allocate()) result{};
        bool raises = false;
        try {
            result = allocate();
        } catch (const raised &) {
            raises = true;
        }
        require(raises == (fails && throws_), "another way out of a raise");
        require(!result == fails, fails ? "a result without room" : "no result");
        return result;
    }

    mb_handle alloc(std::size_t size, int block)
    {
        return call([&] { return cc_alloc(cache_, static_cast<uint32_t>(size)); }, block == 0);
    }

    item *unregistered()
    {
        auto *const found = std::ranges::find(items_, nullptr, &item::entry);
        return found == items_.end() ? nullptr : &*found;
    }

    void insert(item *inserted, mb_handle handle, int block, const std::string &body)
    {
        expected_.alloc(sizeof(cc_entry));
        cc_entry *entry = cc_insert(cache_, inserted, handle, size_of, swap_in, write_back, mova::test::release);
        expect_trace("cc_insert " + hexadecimal(inserted) + " => " + hexadecimal(entry));
        inserted->entry = entry;
        entries_.insert(entries_.begin(), {inserted, block, block != 0, body, inserted->saved});
    }

    item *new_item()
    {
        item *made = unregistered();
        if (!made)
            return nullptr;
        made->size = static_cast<uint32_t>(any_size());
        made->saved = std::string(made->size, made->name);
        made->moves_itself = bytes_.below(4, 2) == 0;
        made->cache = cache_;
        return made;
    }

    void insert_out()
    {
        if (item *made = new_item())
            insert(made, 0, 0, "");
    }

    void insert_dirty()
    {
        item *made = new_item();
        if (!made)
            return;
        const int block = expect_cc_alloc(made->size);
        const mb_handle handle = alloc(made->size, block);
        if (!block)
            return;
        const std::string body(made->size, static_cast<char>(bytes_.next()));
        std::ranges::copy(body, host_.pool().bytes_of(handle).begin());
        insert(made, handle, block, body);
    }

    void expect_fetch(const item *fetched)
    {
        expected_.call(std::string("size ") + fetched->name);
        const int block = expect_cc_alloc(fetched->size);
        if (!block)
            return;
        model_entry &entry = entries_[index_of(fetched)];
        entry.block = block;
        entry.body = entry.saved;
        expected_.call("mb_get " + name_of(block));
        expected_.call(std::string("swap_in ") + fetched->name + " " + std::to_string(fetched->size));
        expect_trace("cc_get " + hexadecimal(fetched->entry));
    }

    void *get_at(std::size_t index)
    {
        const item *fetched = entries_[index].registered;
        if (!entries_[index].block)
            expect_fetch(fetched);
        const int block = entries_[index_of(fetched)].block;
        if (block) {
            make_first(index_of(fetched));
            expected_.call("mb_get " + name_of(block));
        }
        void *body = call([&] { return cc_get(cache_, fetched->entry); }, block == 0);
        require(!block || body == host_.pool().bytes_of(fetched->entry->handle).data(), "another address");
        return body;
    }

    void get()
    {
        if (!entries_.empty())
            get_at(any_index());
    }

    /* What is written into a body that is not dirty is lost when it is evicted. */
    void scribble()
    {
        if (entries_.empty())
            return;
        void *body = get_at(any_index());
        if (!body)
            return;
        std::ranges::fill(entries_.front().body, static_cast<char>(bytes_.next()));
        std::ranges::copy(entries_.front().body, static_cast<char *>(body));
    }

    void lazy_swap_out()
    {
        if (entries_.empty())
            return;
        const std::size_t index = any_index();
        cc_lazy_swap_out(cache_, entries_[index].registered->entry);
        if (entries_[index].block)
            make_first(index);
    }

    std::size_t expect_swap_out(std::size_t index)
    {
        expect_trace("cc_swap_out " + hexadecimal(entries_[index].registered->entry));
        return expect_eviction(index);
    }

    void swap_out()
    {
        if (entries_.empty())
            return;
        const std::size_t index = any_index();
        cc_entry *entry = entries_[index].registered->entry;
        expect_swap_out(index);
        cc_swap_out(cache_, entry);
    }

    void flush()
    {
        for (std::size_t i = 0; i < entries_.size();)
            i = expect_swap_out(i);
        cc_flush(cache_);
    }

    void take()
    {
        const std::size_t size = any_size();
        const int block = expect_cc_alloc(size);
        const mb_handle handle = alloc(size, block);
        if (block)
            held_.push_back({handle, block, size});
    }

    void free_held()
    {
        if (held_.empty())
            return;
        held_block freed = held_.back();
        held_.pop_back();
        expect_mb_free(freed.block, freed.size);
        cc_free(cache_, &freed.handle);
        require(freed.handle == 0, "free left the handle");
    }

    void expect_removal(std::size_t index)
    {
        const model_entry &entry = entries_[index];
        if (entry.block)
            expect_mb_free(entry.block, entry.registered->size);
        expected_.dealloc(entry.registered->entry, sizeof(cc_entry));
        expect_trace("cc_remove : " + hexadecimal(entry.registered->entry));
        entry.registered->entry = nullptr;
        entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(index));
    }

    void remove()
    {
        if (entries_.empty())
            return;
        const std::size_t index = any_index();
        cc_entry *entry = entries_[index].registered->entry;
        expect_removal(index);
        cc_remove(cache_, &entry);
        require(!entry, "remove left the variable");
    }

    void make_empty()
    {
        while (!entries_.empty()) {
            expected_.call(std::string("release ") + entries_.front().registered->name);
            expect_removal(0);
        }
        cc_make_empty(cache_);
    }

    void empty_sometimes()
    {
        if (bytes_.below(4, 1) == 0)
            make_empty();
    }

    void report()
    {
        require(cc_check(cache_) == 12 + 36 * entries_.size(), "check reports another size");
        expected_.call("dprintf cc_print\n");
        for (const model_entry &entry : entries_) {
            char handle[9];
            std::snprintf(handle, sizeof handle, "%8X", static_cast<unsigned>(entry.registered->entry->handle));
            expected_.call("dprintf entry " + hexadecimal(entry.registered->entry) +
                           " : item = " + hexadecimal(entry.registered) + " : handle = " + handle + "\n");
        }
        cc_print(cache_);
    }

    void set_debug() { cc_debug = static_cast<int32_t>(bytes_.below(3, 2)) - 1; }

    void set_raise_mode()
    {
        throws_ = bytes_.below(2) == 0;
        host_.set_raise_mode(throws_ ? recording_host::raise_mode::throws : recording_host::raise_mode::returns);
    }

    /* ---- comparison ---- */

    void compare() override
    {
        const int broken =
            broken_invariant(*cache_, [this](mb_handle handle) { return host_.pool().name_of(handle)[0] == 'b'; });
        require(broken == 0, "invariant " + std::to_string(broken) + " is broken");
        require(cache_->pool == host_.pool().address(), "another pool");
        const cc_entry *entry = cache_->first;
        for (const model_entry &expected : entries_) {
            require(entry && entry == expected.registered->entry, "another entry");
            compare_entry(*entry, expected);
            entry = entry->next;
        }
        require(!entry, "another number of entries");
        require(host_.pool().live_blocks() == live_blocks(), "another number of blocks");
        expected_.compare();
    }

    std::size_t live_blocks() const
    {
        return held_.size() + static_cast<std::size_t>(std::ranges::count_if(
                                  entries_, [](const model_entry &entry) { return entry.block != 0; }));
    }

    void compare_entry(const cc_entry &entry, const model_entry &expected)
    {
        require(entry.item == expected.registered, "another item");
        require(entry.size_fn == size_of && entry.swap_in_fn == swap_in && entry.write_back_fn == write_back &&
                    entry.release_fn == mova::test::release,
                "other callbacks");
        require(entry.status == (expected.dirty ? 0xC0 : expected.block ? 0x80 : 0), "another status");
        require(expected.registered->saved == expected.saved, "something else was written back");
        require(host_.pool().name_of(entry.handle) == (expected.block ? name_of(expected.block) : "0"),
                "another block");
        if (expected.block)
            require(std::ranges::equal(host_.pool().bytes_of(entry.handle), expected.body,
                                       [](unsigned char a, char b) { return a == static_cast<unsigned char>(b); }),
                    "another body");
    }

    recording_host &host_ = recording_host::get();
    expected_calls expected_;
    std::array<item, 12> items_{};
    cc_cache *cache_ = nullptr;
    model_list entries_;
    std::vector<held_block> held_;
    std::size_t budget_ = 0, used_ = 0;
    int last_block_ = 0;
    bool throws_ = true;
};

[[maybe_unused]] const bool added = add_model<interpreter>("swap_cache", {80, 2000}, {2000, 40}, {2, 3});

} // namespace

} // namespace mova::test
