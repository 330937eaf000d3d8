/* SPDX-License-Identifier: MIT */
/* The checked memory service: each block is a larger one of the ordinary service, with a header before it and a guard behind.

       | header: cookie size made | links | guard |  the program's bytes  | guard |

   The cookie says whether a block begins here and lives. Released blocks are filled with a pattern, whose words are no
   address on 64-bit, and kept for a while; when one is let go it must still hold the pattern. Large ones are let go at once. */
#include <mova/checked/internal/blocks.h>
#include <mova/frame/host.h>
#include <mova/host/memory.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include <pthread.h>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#define HAS_ONE_THREAD __libc_single_threaded
#else
#define HAS_ONE_THREAD false
#endif

/* The ordinary service. */
extern "C" {
void *mova_plain_MM_alloc_item(size_t size);
void mova_plain_MM_dealloc_item(void *item, size_t size);
mova_memory_class mova_plain_mova_memory_statistics_of_size(size_t size);
mova_memory_totals mova_plain_mova_memory_statistics(void);
}

namespace mova::checked {

namespace {

struct alignas(16) header {
    uintptr_t cookie;
    size_t size;
    const void *made;
    header *next,
        *previous; /* of those that live; once it is released, the next to be let go and where it was released */
    uint64_t guard;
};

constexpr uint64_t guard_word = 0xA5C3A5C3A5C3A5C3u;
constexpr int pattern = 0xDF;
constexpr size_t overhead = sizeof(header) + sizeof guard_word;
constexpr size_t largest_kept = 16384;
constexpr size_t most_kept = 8192;
constexpr size_t most_kept_bytes = size_t{4} << 20;

std::mutex mutex;
header live{0, 0, nullptr, &live, &live, 0};
header *oldest_kept, *newest_kept;
size_t kept, kept_bytes;

class lock {
public:
    lock() : locked_(!HAS_ONE_THREAD)
    {
        if (locked_)
            mutex.lock();
    }
    ~lock()
    {
        if (locked_)
            mutex.unlock();
    }
    lock(const lock &) = delete;
    lock &operator=(const lock &) = delete;

private:
    bool locked_;
};

/* A child of a process that forks must not find the lock held by a thread that it does not have. */
[[gnu::constructor]] void hold_over_forks()
{
    pthread_atfork([] { mutex.lock(); }, [] { mutex.unlock(); }, [] { mutex.unlock(); });
}

/* ---- one block ---- */

uintptr_t cookie_of(const header *at, bool lives)
{
    return (reinterpret_cast<uintptr_t>(at) * static_cast<uintptr_t>(0x9E3779B97F4A7C15u)) ^ (lives ? 0x5A : 0xA5);
}

header *header_of(void *item)
{
    return static_cast<header *>(item) - 1;
}

char *bytes_of(header *block)
{
    return reinterpret_cast<char *>(block + 1);
}

/* A multiple of 16, so that every block is aligned to that. */
size_t whole_size(size_t size)
{
    return (size + overhead + 15) & ~size_t{15};
}

bool is_whole_behind(header *block)
{
    return std::memcmp(bytes_of(block) + block->size, &guard_word, sizeof guard_word) == 0;
}

bool is_untouched(header *block)
{
    const char *const bytes = bytes_of(block);
    const size_t size = block->size;
    return size == 0 || (static_cast<unsigned char>(*bytes) == pattern && std::memcmp(bytes, bytes + 1, size - 1) == 0);
}

/* ---- reports ---- */

void report(const block_misuse &misuse)
{
    if (mova_checked_report_block)
        return mova_checked_report_block(&misuse);
    std::fprintf(stderr, "mova: %s: %s\n", misuse.function, misuse.what);
    std::abort();
}

/* What is wrong with the guards of a block that lives, or null. */
const char *broken_guard(header *block)
{
    return block->guard != guard_word ? "bytes before the block were written to"
           : !is_whole_behind(block)  ? "bytes behind the block were written to"
                                      : nullptr;
}

/* Nobody knows where that was: the place is the one of the release. */
block_misuse late_write(header *block)
{
    return {"MM_dealloc_item",
            "the block was written to after its release",
            block->previous,
            bytes_of(block),
            block->size,
            block->made,
            nullptr};
}

/* Returns whether the block is one that the program may release: says what it is otherwise. */
bool judge_release(const char *function, void *item, size_t size, const void *where)
{
    header *const block = header_of(item);
    if (reinterpret_cast<uintptr_t>(item) % alignof(header) != 0 ||
        (block->cookie != cookie_of(block, true) && block->cookie != cookie_of(block, false))) {
        report({function, "no block begins there, or the bytes before it were written to", where, item, 0, nullptr,
                nullptr});
        return false;
    }
    if (block->cookie == cookie_of(block, false)) {
        report({function, "the block was released", where, item, block->size, block->made, block->previous});
        return false;
    }
    if (const char *const what = broken_guard(block))
        report({function, what, where, item, block->size, block->made, nullptr});
    if (size != block->size) {
        char what[96];
        std::snprintf(what, sizeof what, "the size is %zu, and the block's is %zu", size, block->size);
        report({function, what, where, item, block->size, block->made, nullptr});
    }
    return true;
}

/* ---- the blocks ---- */

void let_go(header *block)
{
    const size_t size = block->size;
    block->cookie = 0;
    mova_plain_MM_dealloc_item(block, whole_size(size));
}

/* Puts it behind those that are kept, and takes the oldest out where they are too many: null otherwise. Under the lock. */
header *keep(header *block)
{
    block->next = nullptr;
    (newest_kept ? newest_kept->next : oldest_kept) = block;
    newest_kept = block;
    kept_bytes += block->size;
    if (++kept <= most_kept && kept_bytes <= most_kept_bytes)
        return nullptr;
    header *const oldest = oldest_kept;
    oldest_kept = oldest->next;
    --kept;
    kept_bytes -= oldest->size;
    return oldest;
}

void release(header *block, const void *where)
{
    const bool is_kept = block->size <= largest_kept;
    if (is_kept)
        std::memset(bytes_of(block), pattern, block->size);
    header *gone = block;
    {
        const lock held;
        block->next->previous = block->previous;
        block->previous->next = block->next;
        block->cookie = cookie_of(block, false);
        block->previous = static_cast<header *>(const_cast<void *>(where));
        if (is_kept)
            gone = keep(block);
    }
    if (!gone)
        return;
    if (is_kept && !is_untouched(gone))
        report(late_write(gone));
    let_go(gone);
}

} // namespace

} // namespace mova::checked

using namespace mova::checked;

void *mova_checked_allocate(size_t size, const void *where)
{
    const bool fits = size <= PTRDIFF_MAX - overhead - 15;
    auto *const block = static_cast<header *>(mova_plain_MM_alloc_item(fits ? whole_size(size) : size));
    if (!block)
        return nullptr;
    block->cookie = cookie_of(block, true);
    block->size = size;
    block->made = where;
    block->guard = guard_word;
    std::memcpy(bytes_of(block) + size, &guard_word, sizeof guard_word);
    const lock held;
    block->next = live.next;
    block->previous = &live;
    live.next->previous = block;
    live.next = block;
    return bytes_of(block);
}

/* The memory that is wrong is left where it is; a wrong size is put right. */
void mova_checked_release(void *item, size_t size, const void *where)
{
    if (item && judge_release("MM_dealloc_item", item, size, where))
        release(header_of(item), where);
}

void *mova_checked_reallocate(void *item, size_t old_size, size_t new_size, const void *where)
{
    const bool is_block = !item || judge_release("MM_realloc_item", item, old_size, where);
    void *const moved = mova_checked_allocate(new_size, where);
    if (moved && item && is_block) {
        header *const old = header_of(item);
        std::memcpy(moved, item, std::min(old->size, new_size));
        release(old, where);
    }
    return moved;
}

/* Other threads may be running still: what is found is reported without the lock, as far as there is room. */
void mova_checked_close_blocks(block_visitor visit, void *context)
{
    constexpr size_t most = 64;
    block_misuse found[most];
    size_t count = 0;
    {
        const lock held;
        for (header *block = oldest_kept; block; block = block->next) {
            if (count < most && !is_untouched(block))
                found[count++] = late_write(block);
        }
        for (header *block = live.next; block != &live; block = block->next) {
            const char *const what = broken_guard(block);
            if (count < most && what)
                found[count++] = {"MM_alloc_item", what, block->made, bytes_of(block), block->size, nullptr, nullptr};
            visit(bytes_of(block), block->size, block->made, context);
        }
    }
    for (size_t i = 0; i < count; ++i)
        report(found[i]);
}

/* ---- the services ---- */

extern "C" {

/* Under a name that no program's own service takes the place of. */
__attribute__((visibility("hidden"))) void *mova_checked_own_alloc_item(size_t size)
{
    void *const block = mova_checked_allocate(size, __builtin_return_address(0));
    if (block && mova_checked_note_allocated)
        mova_checked_note_allocated(block);
    return block;
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
    void *const block = mova_checked_reallocate(item, old_size, new_size, where);
    if (block && item && mova_checked_note_released)
        mova_checked_note_released(item, where);
    if (block && mova_checked_note_allocated)
        mova_checked_note_allocated(block);
    return block;
}

void *mova_memory_zeroed(size_t size)
{
    void *const block = mova_checked_allocate(size, __builtin_return_address(0));
    if (block && mova_checked_note_allocated)
        mova_checked_note_allocated(block);
    return block ? std::memset(block, 0, size) : nullptr;
}

/* The ordinary service's figures count what lies around the blocks, and what is kept of them. */
mova_memory_class mova_memory_statistics_of_size(size_t size)
{
    mova_memory_class figures = mova_plain_mova_memory_statistics_of_size(size);
    figures.live_blocks = figures.cached_blocks = 0;
    const lock held;
    for (const header *block = live.next; block != &live; block = block->next)
        figures.live_blocks +=
            mova_plain_mova_memory_statistics_of_size(block->size).largest_size == figures.largest_size;
    return figures;
}

mova_memory_totals mova_memory_statistics(void)
{
    mova_memory_totals figures = mova_plain_mova_memory_statistics();
    figures.live_blocks = figures.live_bytes = figures.cached_bytes = 0;
    const lock held;
    for (const header *block = live.next; block != &live; block = block->next) {
        ++figures.live_blocks;
        figures.live_bytes += mova_plain_mova_memory_statistics_of_size(block->size).block_size;
    }
    return figures;
}
}

bool mova_checked_is_service(void *(*allocate)(size_t))
{
    return allocate == &mova_checked_own_alloc_item;
}
