/* SPDX-License-Identifier: MIT */
/* The checked memory service. Released blocks are filled with a pattern and kept for a while; when one is let go it must still
   hold the pattern. Those that are too large for that are let go at once. */
#include "given_blocks.h"

#include <mova/frame/host.h>
#include <mova/host/memory.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

/* The ordinary service. */
extern "C" {
mova_memory_class mova_plain_mova_memory_statistics_of_size(size_t size);
mova_memory_totals mova_plain_mova_memory_statistics(void);
}

namespace mova::checked {

namespace {

constexpr size_t largest_kept = 16384;
constexpr size_t most_kept_bytes = size_t{4} << 20;

/* Those that were released last, in a ring. */
class kept_blocks {
public:
    struct kept {
        given block;
        const void *released = nullptr; /* where */
    };

    bool is_full() const { return count_ == most || bytes_ > most_kept_bytes; }

    void add(given block, size_t size, const void *where)
    {
        at(count_++) = {block, where};
        bytes_ += size;
    }

    given oldest() const { return at(0).block; }

    kept take_oldest()
    {
        const kept oldest = at(0);
        first_ = (first_ + 1) % most;
        --count_;
        bytes_ -= oldest.block.size();
        return oldest;
    }

    /* Where it was released; null where it is not kept. */
    const void *place_of(given block) const
    {
        for (size_t i = 0; i < count_; ++i) {
            if (at(i).block.bytes() == block.bytes())
                return at(i).released;
        }
        return nullptr;
    }

    void for_each(auto visit) const
    {
        for (size_t i = 0; i < count_; ++i)
            visit(at(i));
    }

private:
    static constexpr size_t most = 8192;

    kept &at(size_t index) { return ring_[(first_ + index) % most]; }
    const kept &at(size_t index) const { return ring_[(first_ + index) % most]; }

    kept ring_[most];
    size_t first_ = 0, count_ = 0, bytes_ = 0;
};

constinit kept_blocks released;

/* ---- reports ---- */

void report(const block_misuse &misuse)
{
    if (mova_checked_report_block)
        return mova_checked_report_block(&misuse);
    std::fprintf(stderr, "mova: %s: %s\n", misuse.function, misuse.what);
    std::abort();
}

/* What is wrong with the guards of a block that lives, or null. */
const char *broken_guard(given block)
{
    return !block.is_whole_before()   ? "bytes before the block were written to"
           : !block.is_whole_behind() ? "bytes behind the block were written to"
                                      : nullptr;
}

/* Nobody knows where that was: the place is the one of the release. */
block_misuse late_write(const kept_blocks::kept &written)
{
    given block = written.block;
    return {"MM_dealloc_item",
            "the block was written to after its release",
            written.released,
            block.bytes(),
            block.size(),
            block.record()->made,
            nullptr};
}

/* Whether the block is one that the program may release: says what it is otherwise. */
bool judge_release(const char *function, const void *item, given block, size_t size, const void *where)
{
    if (!block || block.state() == block_state::unused) {
        report({function, "no block begins there", where, item, 0, nullptr, nullptr});
        return false;
    }
    if (block.state() != block_state::live) {
        const void *made = nullptr, *last = nullptr;
        if (const lock held; block.state() == block_state::kept) {
            made = block.record()->made;
            last = released.place_of(block);
        }
        report({function, "the block was released", where, item, block.size(), made, last});
        return false;
    }
    if (const char *const what = broken_guard(block))
        report({function, what, where, item, block.size(), block.record()->made, nullptr});
    if (size != block.size()) {
        char what[96];
        std::snprintf(what, sizeof what, "the size is %zu, and the block's is %zu", size, block.size());
        report({function, what, where, item, block.size(), block.record()->made, nullptr});
    }
    return true;
}

/* ---- the blocks ---- */

/* Lets the oldest of those that are kept go, where they are too many. */
void let_one_go()
{
    kept_blocks::kept oldest;
    {
        const lock held;
        if (!released.is_full())
            return;
        oldest = released.take_oldest();
    }
    if (!oldest.block.is_untouched())
        report(late_write(oldest));
    if (oldest.block.is_large())
        return give_back_large(oldest.block);
    const lock held;
    give_back_small(oldest.block);
}

/* Keeps a block of that size. Returns whether there are not too many by now: one may have gone for it. */
__attribute__((always_inline)) inline bool keep(given block, size_t size, const void *where)
{
    const lock held;
    released.add(block, size, where);
    block.set_state(block_state::kept);
    if (!released.is_full())
        return true;
    const given oldest = released.oldest();
    if (oldest.is_large() || !oldest.is_untouched())
        return false;
    give_back_small(released.take_oldest().block);
    return true;
}

__attribute__((always_inline)) inline void release(given block, size_t size, const void *where)
{
    if (size > largest_kept)
        return give_back_large(block);
    block.fill();
    if (!keep(block, size, where))
        let_one_go();
}

/* What lives is whole when others are told of it: under the lock. */
__attribute__((always_inline)) inline given allocate(size_t size, const void *where)
{
    if (size <= largest_small) {
        const lock held;
        if (const given small = take_small(size)) {
            small.begin(size, where);
            return small;
        }
    }
    return take_large(size, where);
}

/* The memory that is wrong is left where it is; a wrong size is put right. */
given reallocate(void *item, size_t old_size, size_t new_size, const void *where)
{
    const given old = find_block(item);
    const bool is_block = item && judge_release("MM_realloc_item", item, old, old_size, where);
    const given moved = allocate(new_size, where);
    if (moved && is_block) {
        std::memcpy(moved.bytes(), item, std::min(old.size(), new_size));
        release(old, old.size(), where);
    }
    return moved;
}

given_block as_given(given block)
{
    return {block.bytes(), block && !block.is_large() ? &block.record()->noted : nullptr};
}

} // namespace

} // namespace mova::checked

using namespace mova::checked;

given_block mova_checked_allocate(size_t size, const void *where)
{
    return as_given(allocate(size, where));
}

void mova_checked_release_small(block_record *record, void *item, size_t size, const void *where)
{
    const given block(static_cast<char *>(item), record);
    if (block.is_plainly(size))
        release(block, size, where);
    else if (judge_release("MM_dealloc_item", item, block, size, where))
        release(block, block.size(), where);
}

void mova_checked_release(void *item, size_t size, const void *where)
{
    if (!item)
        return;
    const given block = find_block(item);
    if (block && !block.is_large())
        mova_checked_release_small(block.record(), item, size, where);
    else if (judge_release("MM_dealloc_item", item, block, size, where))
        release(block, block.size(), where);
}

given_block mova_checked_reallocate(void *item, size_t old_size, size_t new_size, const void *where)
{
    return as_given(reallocate(item, old_size, new_size, where));
}

/* Other threads may be running still: what is found is reported without the lock, as far as there is room. */
void mova_checked_judge_blocks(void)
{
    struct findings {
        block_misuse found[64];
        size_t count;
        const char *last_broken; /* a small block's guard is also the next one's */

        void add(const block_misuse &misuse)
        {
            if (count < std::size(found))
                found[count++] = misuse;
        }
    };
    findings all = {};
    {
        const lock held;
        released.for_each([&](const kept_blocks::kept &each) {
            if (!each.block.is_untouched())
                all.add(late_write(each));
        });
        for_each_live_block(
            [](given block, void *context) {
                auto *const to = static_cast<findings *>(context);
                const char *const what = broken_guard(block);
                if (what && (block.is_whole_behind() ? block.before() : block.behind()) != to->last_broken)
                    to->add(
                        {"MM_alloc_item", what, block.record()->made, block.bytes(), block.size(), nullptr, nullptr});
                to->last_broken = block.is_whole_behind() ? nullptr : block.behind();
            },
            &all);
    }
    for (size_t i = 0; i < all.count; ++i)
        report(all.found[i]);
}

void mova_checked_visit_blocks(block_visitor visit, void *context)
{
    struct visitor {
        block_visitor visit;
        void *context;
    };
    visitor told = {visit, context};
    const lock held;
    for_each_live_block(
        [](given block, void *argument) {
            const auto *const to = static_cast<const visitor *>(argument);
            to->visit(block.bytes(), block.size(), block.record()->made, block.record()->noted, to->context);
        },
        &told);
}

size_t mova_checked_block_bytes(void)
{
    const lock held;
    size_t bytes = large_table_bytes();
    for_each_live_block([](given block, void *sum) { *static_cast<size_t *>(sum) += bytes_around(block); }, &bytes);
    return bytes;
}

/* ---- the services ---- */

static void *allocate_for_program(size_t size, const void *where)
{
    const given block = allocate(size, where);
    if (block && mova_checked_note_allocated)
        mova_checked_note_allocated(block.bytes());
    return block.bytes();
}

extern "C" {

/* Under a name that no program's own service takes the place of. */
__attribute__((visibility("hidden"))) void *mova_checked_own_alloc_item(size_t size)
{
    return allocate_for_program(size, __builtin_return_address(0));
}

__attribute__((alias("mova_checked_own_alloc_item"))) void *MM_alloc_item(size_t size);

void MM_dealloc_item(void *item, size_t size)
{
    const void *const where = __builtin_return_address(0);
    if (item && mova_checked_note_released)
        mova_checked_note_released(item, where);
    mova_checked_release(item, size, where);
}

void *MM_realloc_item(void *item, size_t old_size, size_t new_size)
{
    const void *const where = __builtin_return_address(0);
    const given block = reallocate(item, old_size, new_size, where);
    if (block && item && mova_checked_note_released)
        mova_checked_note_released(item, where);
    if (block && mova_checked_note_allocated)
        mova_checked_note_allocated(block.bytes());
    return block.bytes();
}

void *mova_memory_zeroed(size_t size)
{
    void *const block = allocate_for_program(size, __builtin_return_address(0));
    return block ? std::memset(block, 0, size) : nullptr;
}

/* The ordinary service's figures count what lies around large blocks, and what is kept of them. */
mova_memory_class mova_memory_statistics_of_size(size_t size)
{
    mova_memory_class figures = mova_plain_mova_memory_statistics_of_size(size);
    figures.live_blocks = figures.cached_blocks = 0;
    const lock held;
    for_each_live_block(
        [](given block, void *counted) {
            auto *const to = static_cast<mova_memory_class *>(counted);
            to->live_blocks += mova_plain_mova_memory_statistics_of_size(block.size()).largest_size == to->largest_size;
        },
        &figures);
    return figures;
}

mova_memory_totals mova_memory_statistics(void)
{
    mova_memory_totals figures = mova_plain_mova_memory_statistics();
    figures.live_blocks = figures.live_bytes = figures.cached_bytes = 0;
    const lock held;
    figures.held_bytes += slab_bytes();
    figures.peak_bytes += slab_bytes();
    for_each_live_block(
        [](given block, void *counted) {
            auto *const to = static_cast<mova_memory_totals *>(counted);
            ++to->live_blocks;
            to->live_bytes += mova_plain_mova_memory_statistics_of_size(block.size()).block_size;
        },
        &figures);
    return figures;
}
}

bool mova_checked_is_service(void *(*allocate)(size_t))
{
    return allocate == &mova_checked_own_alloc_item;
}
