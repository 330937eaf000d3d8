/* SPDX-License-Identifier: MIT */
/* The process's memory service: one heap over the system, and a cache for each thread. The caller gives the exact size on
   release, so no block carries a header.

       thread A: its cache     thread B: its cache          a bin of free blocks for each size class
           ^  |                    ^  |
           |  v  several blocks    |  v
       +-------------------------------------+
       | heap                                |              internal/heap.h
       +-------------------------------------+

   A block's class follows from its size. Blocks of up to 256 KiB come from the thread's cache, without a lock, and go back
   there; larger ones from the heap. A thread without a cache, for want of room or because its own has been ended, takes all
   of them from the heap. */
#include <mova/host/memory.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>

#include <pthread.h>

#include <mova/frame/host.h>
#include <mova/host/internal/heap.h>
#include <mova/host/internal/locks.h>
#include <mova/host/internal/size_classes.h>
#include <mova/host/internal/system_blocks.h>
#include <mova/host/internal/system_memory.h>
#include <mova/host/internal/thread_cache.h>

namespace {

using namespace mova;
using namespace mova::size_classes;

/* In libmova_host_system, and under a sanitizer, every block is the system's, so that its tools see it. The thread sanitizer
   watches the service's own ways too, where a test asks for them. */
#if defined MOVA_MEMORY_OF_SYSTEM
constexpr bool own_blocks = false;
#elif defined MOVA_MEMORY_OF_ITS_OWN
constexpr bool own_blocks = true;
#elif defined __has_feature
constexpr bool own_blocks =
    !(__has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer));
#elif defined __SANITIZE_ADDRESS__ || defined __SANITIZE_THREAD__
constexpr bool own_blocks = false;
#else
constexpr bool own_blocks = true;
#endif

constinit system_memory process_system;
constinit heap process_heap(process_system, thread_caches::records);
constinit thread_caches process_caches(process_heap);

void report_exhaustion(int32_t line)
{
    EX_raise_exception_line("memory", line, MOVA_ALLOCATION_FAILED);
}

/* ---- a thread's beginning and end ---- */

/* A thread has a cache from its first call on until its end is called. Destructors may allocate after that, round after
   round, and nobody would end a second cache. While it begins, the system may call the service for room of its own. */
enum class stage : unsigned char { fresh, beginning, begun, ended };

constinit thread_cache no_cache;
[[gnu::tls_model("initial-exec")]] constinit thread_local thread_cache *own_cache = &no_cache;
[[gnu::tls_model("initial-exec")]] constinit thread_local stage own_stage = stage::fresh;

/* The process's hooks: into the end of each thread, and around a fork. */
enum class hooks : int { none, being_set, set, gone };
constinit std::atomic<hooks> process_hooks{hooks::none};
constinit bool forks_are_hooked = false; /* changed by the thread that sets the hooks */
constinit pthread_key_t thread_end;

/* 1. From here on the thread has no cache: what destructors yet to come allocate and release is the heap's.
   2. Nor does it get another: nobody would end that.
   3. What it held ready goes to the others. */
void end_thread(void *ended)
{
    own_cache = &no_cache;
    own_stage = stage::ended;
    process_caches.end(static_cast<thread_cache *>(ended));
}

/* A child has but one thread. It must not find a lock held by another that stayed behind, nor a heap in the midst of a
   change: so the forking thread holds all locks meanwhile. What the caches of the others held is lost to the child. */
void lock_before_fork() MOVA_ANNOTATED(no_thread_safety_analysis)
{
    process_caches.lock.lock();
    process_heap.lock();
}

void unlock_after_fork() MOVA_ANNOTATED(no_thread_safety_analysis)
{
    process_heap.unlock();
    process_caches.lock.unlock();
}

/* A thread that stayed behind may have been setting the hooks. That of forks it had set, or this would not be called. */
void go_on_in_child() MOVA_ANNOTATED(no_thread_safety_analysis)
{
    forks_are_hooked = true;
    hooks left_behind = hooks::being_set;
    process_hooks.compare_exchange_strong(left_behind, hooks::none);
    process_caches.keep_only(own_cache == &no_cache ? nullptr : own_cache);
    unlock_after_fork();
}

/* Returns whether they are set. No lock is held meanwhile, for the system may allocate for them.

   1. Those around forks come first: a child forked from here on can go on. Where the system has no memory for them, there
      are no caches, and the next call tries again.
   2. Where it has no key left, there are no caches for good. */
bool set_hooks()
{
    hooks found = hooks::none;
    if (!process_hooks.compare_exchange_strong(found, hooks::being_set))
        return found == hooks::set;
    if (!forks_are_hooked && pthread_atfork(lock_before_fork, unlock_after_fork, go_on_in_child) != 0) {
        process_hooks = hooks::none;
        return false;
    }
    forks_are_hooked = true;
    const bool set = pthread_key_create(&thread_end, end_thread) == 0;
    process_hooks = set ? hooks::set : hooks::gone;
    return set;
}

/* A plugin that contains the service may be unloaded while threads that used it live: they must not call it when they end.
   Their blocks stay where they are. */
[[gnu::destructor]] void forget_threads()
{
    if (process_hooks.exchange(hooks::gone) == hooks::set)
        pthread_key_delete(thread_end);
}

/* Gives the thread a cache, if it may have one. One that uses but large blocks needs it too: it counts releases, and before
   it come the process's hooks. */
bool begin_thread()
{
    if (own_stage != stage::fresh)
        return false;
    own_stage = stage::beginning;
    thread_cache *begun = set_hooks() ? process_caches.begin() : nullptr;
    if (begun && pthread_setspecific(thread_end, begun) != 0) {
        process_caches.end(begun);
        begun = nullptr;
    }
    own_stage = begun ? stage::begun : stage::fresh;
    own_cache = begun ? begun : &no_cache;
    return begun;
}

bool has_cache()
{
    return own_cache != &no_cache || begin_thread();
}

/* ---- blocks ---- */

/* Null where memory has run out. */
spare_mappings::taken try_to_take(unsigned index)
{
    if (!has_cache() || is_large(index))
        return process_heap.take(index);
    void *block = (*own_cache)[index].pop();
    return {block ? block : own_cache->take_anew(index), false};
}

/* Before memory has run out, all that is not in use is given back: first by the thread to the heap, then by the heap. Returns
   whether there was any: what the thread held ready may serve other sizes, though its chunks stay in use. */
bool give_back()
{
    const bool flushed = own_cache != &no_cache && own_cache->flush();
    return process_heap.give_back() || flushed;
}

spare_mappings::taken take(unsigned index)
{
    const spare_mappings::taken block = try_to_take(index);
    return block.start || !give_back() ? block : try_to_take(index);
}

int32_t line_of(size_t size)
{
    return size > run_limit ? MOVA_MEMORY_NO_MAPPING : MOVA_MEMORY_NO_ROOM;
}

spare_mappings::taken take_or_report(size_t size)
{
    if (size > PTRDIFF_MAX) {
        report_exhaustion(MOVA_MEMORY_SIZE_TOO_LARGE);
        return {};
    }
    const spare_mappings::taken block =
        own_blocks ? take(class_of(size)) : spare_mappings::taken{system_blocks::take(size), false};
    if (!block.start)
        report_exhaustion(line_of(size));
    return block;
}

[[gnu::noinline]] void *allocate_slowly(size_t size)
{
    return take_or_report(size).start;
}

[[gnu::noinline]] void release_slowly(void *item, size_t size)
{
    if (!own_blocks)
        return system_blocks::give(item, size);
    if (!item)
        return;
    const unsigned index = class_of(size);
    const bool cached = has_cache();
    if (cached)
        own_cache->tick();
    if (!cached || is_large(index))
        process_heap.give(index, item);
    else if (!(*own_cache)[index].push(item))
        own_cache->give_beyond(index, item);
}

/* Between classes of large blocks. */
void *resize(void *item, unsigned from, unsigned to)
{
    void *resized = process_heap.resize(item, from, to);
    if (!resized && give_back())
        resized = process_heap.resize(item, from, to);
    if (!resized)
        report_exhaustion(MOVA_MEMORY_NO_ROOM_TO_GROW);
    return resized;
}

/* The bin of a small size. Every call loads its top and stores it again, and the next call waits for that. Processors that
   remember which register a place was stored by answer such a load at once where both name the place alike: by this one
   register, with nothing added. */
[[gnu::always_inline]] inline bin &bin_of(size_t size)
{
    bin *found = &(*own_cache)[class_of(size)];
#if defined __x86_64__
    __asm__("" : "+d"(found));
#endif
    return *found;
}

/* ---- over-aligned blocks ---- */

/* What every block of a class is aligned to. Blocks follow each other from the start of a page on. */
size_t alignment_of(unsigned index)
{
    constexpr size_t of_mappings = 4096;
    static_assert(of_mappings == unit_size);
    return index < page_classes ? block_size(index) & -block_size(index) : of_mappings;
}

size_t multiple_of(size_t alignment, size_t size)
{
    return std::max(alignment, (size + alignment - 1) & -alignment);
}

/* Whether a block of a multiple of the alignment is aligned by itself. */
bool is_aligned_anyway(size_t alignment, size_t size)
{
    return alignment_of(class_of(multiple_of(alignment, size))) >= alignment;
}

/* An aligned block within a larger one, whose start stands in the word before it. */
void *allocate_within(size_t alignment, size_t size)
{
    auto *start = static_cast<char *>(MM_alloc_item(alignment + size));
    if (!start)
        return nullptr;
    char *aligned = start + alignment - reinterpret_cast<uintptr_t>(start) % alignment;
    std::memcpy(aligned - sizeof start, &start, sizeof start);
    return aligned;
}

void release_within(void *block, size_t alignment, size_t size)
{
    char *start;
    std::memcpy(&start, static_cast<char *>(block) - sizeof start, sizeof start);
    MM_dealloc_item(start, alignment + size);
}

/* ---- statistics ---- */

mova_memory_class figures_of(unsigned index) MOVA_ANNOTATED(requires_capability(process_caches.lock))
{
    const size_t cached = process_caches.cached(index), taken = process_heap.taken(index);
    return {largest_size(index), block_size(index), taken - std::min(taken, cached), cached};
}

} // namespace

/* Each in as few lines of the instruction cache as it fits into. */
[[gnu::aligned(64)]] void *MM_alloc_item(size_t size)
{
    if (size <= small_limit) [[likely]] {
        if (void *block = bin_of(size).pop()) [[likely]]
            return block;
    }
    return allocate_slowly(size);
}

[[gnu::aligned(64)]] void MM_dealloc_item(void *item, size_t size)
{
    if (size <= small_limit && item) [[likely]] {
        if (bin_of(size).push(item)) [[likely]]
            return;
    }
    release_slowly(item, size);
}

void *MM_realloc_item(void *item, size_t old_size, size_t new_size)
{
    if (new_size > PTRDIFF_MAX) {
        report_exhaustion(MOVA_MEMORY_SIZE_TOO_LARGE);
        return nullptr;
    }
    if (own_blocks) {
        const unsigned from = class_of(old_size), to = class_of(new_size);
        if (from == to)
            return item;
        if (is_large(std::min(from, to)))
            return resize(item, from, to);
    }
    void *moved = MM_alloc_item(new_size);
    if (moved) {
        std::memcpy(moved, item, std::min(old_size, new_size));
        MM_dealloc_item(item, old_size);
    }
    return moved;
}

void *mova_memory_zeroed(size_t size)
{
    const spare_mappings::taken block =
        size > run_limit ? take_or_report(size) : spare_mappings::taken{MM_alloc_item(size), false};
    return block.start && !block.fresh ? std::memset(block.start, 0, size) : block.start;
}

void *mova_memory_aligned(size_t alignment, size_t size)
{
    if (size > PTRDIFF_MAX - std::min(alignment, size_t{PTRDIFF_MAX})) {
        report_exhaustion(MOVA_MEMORY_SIZE_TOO_LARGE);
        return nullptr;
    }
    if (!own_blocks) {
        void *block = std::aligned_alloc(alignment, multiple_of(alignment, size));
        if (!block)
            report_exhaustion(line_of(size));
        return block;
    }
    return is_aligned_anyway(alignment, size) ? MM_alloc_item(multiple_of(alignment, size))
                                              : allocate_within(alignment, size);
}

void mova_memory_release_aligned(void *block, size_t alignment, size_t size)
{
    if (!own_blocks)
        return std::free(block);
    if (!block)
        return;
    if (is_aligned_anyway(alignment, size))
        MM_dealloc_item(block, multiple_of(alignment, size));
    else
        release_within(block, alignment, size);
}

void mova_memory_trim(void)
{
    if (own_cache != &no_cache)
        own_cache->flush();
    process_heap.trim();
}

mova_memory_class mova_memory_statistics_of_size(size_t size)
{
    guard held(process_caches.lock);
    return size > PTRDIFF_MAX ? mova_memory_class{} : figures_of(class_of(size));
}

mova_memory_totals mova_memory_statistics(void)
{
    guard held(process_caches.lock);
    mova_memory_totals totals{0, 0, 0, process_heap.peak(), process_heap.held()};
    for (unsigned index = 0; index < all_classes; ++index) {
        const mova_memory_class figures = figures_of(index);
        totals.live_blocks += figures.live_blocks;
        totals.live_bytes += figures.live_blocks * figures.block_size;
        totals.cached_bytes += figures.cached_blocks * figures.block_size;
    }
    return totals;
}
