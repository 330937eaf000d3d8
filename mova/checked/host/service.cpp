/* SPDX-License-Identifier: MIT */
/* The checked memory service. Released blocks are filled with a pattern and kept for a while; when one serves again, or goes
   back, it must still hold the pattern. Those that are too large for that go back at once. */
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

/* The large blocks that were released last, in a queue. */
class kept_blocks {
public:
    bool is_full() const { return bytes_ > most; }

    void add(given block)
    {
        block.record()->next = nullptr;
        (last_ ? last_.record()->next : first_) = block.record();
        last_ = block;
        bytes_ += block.size();
    }

    given take_oldest()
    {
        const given oldest(reinterpret_cast<char *>(first_) + before_large, first_);
        first_ = first_->next;
        if (!first_)
            last_ = {};
        bytes_ -= oldest.size();
        return oldest;
    }

private:
    static constexpr size_t most = size_t{4} << 20;

    block_record *first_ = nullptr;
    given last_;
    size_t bytes_ = 0;
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
block_misuse late_write(given block)
{
    return {"MM_dealloc_item",
            "the block was written to after its release",
            block.released(),
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
        report({function, "the block was released", where, item, block.size(), block.record()->made, block.released()});
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

/* Keeps a large block. Where too many are kept by now, the oldest of them goes. */
void keep_large(given block, const void *where)
{
    given oldest;
    {
        const lock held;
        block.keep(where);
        released.add(block);
        if (!released.is_full())
            return;
        oldest = released.take_oldest();
    }
    if (!oldest.is_untouched())
        report(late_write(oldest));
    give_back_large(oldest);
}

void release(given block, const void *where)
{
    if (block.size() > largest_kept)
        return give_back_large(block);
    if (block.is_large())
        return keep_large(block, where);
    const lock held;
    block.keep(where);
}

/* A block that was released and written to since. */
given begin_after_report(given block, size_t size, const void *where)
{
    report(late_write(block));
    const lock held;
    block.begin(size, where);
    return block;
}

/* What lives is whole when others are told of it: under the lock. */
given allocate(size_t size, const void *where)
{
    given taken;
    if (size <= largest_small) {
        const lock held;
        size_class &from = class_for(size);
        if (is_ready(from) || begin_slab(from, pitch_for(size))) {
            const small_block next = take_next(from);
            taken = {next.bytes, next.record};
            if (taken.state() == block_state::unused || taken.is_untouched()) {
                taken.begin(size, where);
                return taken;
            }
        }
    }
    return taken ? begin_after_report(taken, size, where) : take_large(size, where);
}

/* The memory that is wrong is left where it is; a wrong size is put right. */
given reallocate(void *item, size_t old_size, size_t new_size, const void *where)
{
    const given old = find_block(item);
    const bool is_block = item && judge_release("MM_realloc_item", item, old, old_size, where);
    const given moved = allocate(new_size, where);
    if (moved && is_block) {
        std::memcpy(moved.bytes(), item, std::min(old.size(), new_size));
        release(old, where);
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

void mova_checked_release(void *item, size_t size, const void *where)
{
    if (!item)
        return;
    const given block = find_block(item);
    if (judge_release("MM_dealloc_item", item, block, size, where))
        release(block, where);
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
        for_each_block(
            block_state::kept,
            [](given block, void *context) {
                if (!block.is_untouched())
                    static_cast<findings *>(context)->add(late_write(block));
            },
            &all);
        for_each_block(
            block_state::live,
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
    for_each_block(
        block_state::live,
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
    for_each_block(
        block_state::live, [](given block, void *sum) { *static_cast<size_t *>(sum) += bytes_around(block); }, &bytes);
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
    for_each_block(
        block_state::live,
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
    for_each_block(
        block_state::live,
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
