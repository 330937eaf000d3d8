/* Blocks of memory by size class. The caller gives the exact size on release, so no block carries a header.

       thread A            thread B
       +-------------+     +-------------+
       | 64 pointers |     | 64 pointers |          a bin for each class
       +-------------+     +-------------+
           ^  |                ^  |  32 blocks
           |  v                |  v                 pages of 64 KiB: # taken, . free
       +---------------------------------+          +---------------+   +---------------+
       | a class: its lock, and its      | -------> | # # . # . . # |   | . . # # . . # |
       | pages with a free block         |          +---------------+   +---------------+
       +---------------------------------+
           ^  |  a page whose blocks are all free
           |  v
       +---------------------------------+
       | chunks of 2 MiB                 | <------> the system
       +---------------------------------+

   Small blocks, up to 1 KiB: a thread takes them from its bin and puts them back there, without a lock and without
   touching the block. An empty bin is refilled with what one word of a page's bitmap has free, to be handed out in
   order of address: blocks allocated in a row lie side by side, however the heap has aged. A full bin gives its
   older half back to the bitmaps. A thread that ends gives back all.
   Middle blocks, up to 256 KiB: from the bitmaps and back, one at a time. Large blocks: a mapping each.

   Invariants, beside those of internal/pages.h and internal/large_blocks.h:
     1. A block's class follows from its size. A block in a bin is not free in its page.
     2. A bin is its thread's alone, but for its top, which others may read.
     3. Locks are taken in the order caches, class, chunks, and no error is raised under one. */
#include <mova/host/memory.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>

#include <pthread.h>

#include <mova/frame/host.h>
#include <mova/host/internal/large_blocks.h>
#include <mova/host/internal/locks.h>
#include <mova/host/internal/pages.h>
#include <mova/host/internal/size_classes.h>

namespace {

using namespace mova;
using namespace mova::size_classes;

/* Under a sanitizer every block is the system's, so that the sanitizer sees it, unless the build asks otherwise. */
#if defined __has_feature && !defined MOVA_MEMORY_OWN_PAGES
constexpr bool own_pages =
    !(__has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer));
#elif (defined __SANITIZE_ADDRESS__ || defined __SANITIZE_THREAD__) && !defined MOVA_MEMORY_OWN_PAGES
constexpr bool own_pages = false;
#else
constexpr bool own_pages = true;
#endif

constexpr uint32_t bin_size = 64, flushed = bin_size / 2;
constexpr size_t bin_bytes = bin_size * sizeof(void *);
constexpr auto relaxed = std::memory_order_relaxed;

/* Begins at a multiple of twice its size: so its top tells by itself whether it is empty or full. */
struct alignas(2 * bin_bytes) bin {
    void *blocks[bin_size];
};

struct cache {
    bin bins[small_classes];
    std::atomic<void **> tops[small_classes];
    cache *next, *prev;

    uint32_t count(unsigned index) const { return static_cast<uint32_t>(tops[index] - bins[index].blocks); }
    void set_count(unsigned index, uint32_t to) { tops[index].store(bins[index].blocks + to, relaxed); }
};

constinit std::mutex caches_lock;
constinit cache *caches = nullptr;
[[gnu::tls_model("initial-exec")]] constinit thread_local cache *own_cache = nullptr;

void *exhausted(int32_t line)
{
    EX_raise_exception_line("memory", line, MOVA_ALLOCATION_FAILED);
    return nullptr;
}

void end_thread(void *ending)
{
    auto *ended = static_cast<cache *>(ending);
    own_cache = nullptr;
    auto guard = locked(caches_lock);
    for (unsigned i = 0; i < small_classes; i++)
        pages::give(i, ended->bins[i].blocks, ended->count(i));
    pages::unlink(caches, ended);
    mappings::unmap(ended, sizeof(cache));
}

/* Gives the thread its bins, all empty. Where that fails, the thread's blocks come one at a time from the pages. */
bool begin_thread()
{
    static pthread_key_t key;
    static const bool has_key = pthread_key_create(&key, end_thread) == 0;
    void *room = has_key ? mappings::map(sizeof(cache), mappings::kind::ordinary) : nullptr;
    if (!room)
        return false;
    if (pthread_setspecific(key, room) != 0) {
        mappings::unmap(room, sizeof(cache));
        return false;
    }
    own_cache = new (room) cache;
    for (unsigned i = 0; i < small_classes; i++)
        own_cache->set_count(i, 0);
    auto guard = locked(caches_lock);
    pages::link(caches, own_cache);
    return true;
}

bool has_bin(unsigned index)
{
    return index < small_classes && (own_cache || begin_thread());
}

/* Returns null where memory has run out. */
void *allocate(unsigned index)
{
    if (index >= first_large_class)
        return large_blocks::take(index);
    void *block = nullptr;
    if (!has_bin(index))
        return pages::take(index, &block, 1) ? block : nullptr;
    void **blocks = own_cache->bins[index].blocks;
    uint32_t count = pages::take(index, blocks, bin_size);
    if (count == 0)
        return nullptr;
    own_cache->set_count(index, count - 1);
    return blocks[count - 1];
}

[[gnu::noinline]] void *allocate_slowly(size_t size)
{
    if (size > PTRDIFF_MAX)
        return exhausted(MOVA_MEMORY_SIZE_TOO_LARGE);
    void *block = nullptr;
    if (!own_pages)
        block = size % 16 != 0 ? std::malloc(size) : std::aligned_alloc(16, size);
    else if (!(block = allocate(class_of(size))) && large_blocks::drop_kept())
        block = allocate(class_of(size));
    return block ? block : exhausted(size > middle_limit ? MOVA_MEMORY_NO_MAPPING : MOVA_MEMORY_NO_ROOM);
}

[[gnu::noinline]] void release_slowly(void *item, size_t size)
{
    if (!own_pages)
        return std::free(item);
    unsigned index = class_of(size);
    if (index >= first_large_class)
        return large_blocks::give(index, item);
    if (!has_bin(index))
        return pages::give(index, &item, 1);
    void **blocks = own_cache->bins[index].blocks;
    uint32_t count = own_cache->count(index);
    if (count == bin_size) {
        pages::give(index, blocks, flushed);
        std::memcpy(blocks, blocks + flushed, flushed * sizeof *blocks);
        count -= flushed;
    }
    blocks[count] = item;
    own_cache->set_count(index, count + 1);
}

/* Requires `caches_lock`. */
mova_memory_class figures_of(unsigned index)
{
    size_t cached = 0;
    for (cache *each = index < small_classes ? caches : nullptr; each; each = each->next)
        cached += each->count(index);
    bool large = index >= first_large_class;
    auto guard = locked(large ? large_blocks::lock : pages::classes[index].lock);
    size_t taken = large ? large_blocks::live[index] : pages::classes[index].taken;
    return {largest_size(index), block_size(index), taken - std::min(taken, cached), cached};
}

} // namespace

void *MM_alloc_item(size_t size)
{
    if (size <= small_limit && own_cache) [[likely]] {
        std::atomic<void **> &own_top = own_cache->tops[class_of(size)];
        void **top = own_top.load(relaxed);
        if (reinterpret_cast<uintptr_t>(top) % sizeof(bin) != 0) [[likely]] {
            own_top.store(top - 1, relaxed);
            return top[-1];
        }
    }
    return allocate_slowly(size);
}

void MM_dealloc_item(void *item, size_t size)
{
    if (size <= small_limit && own_cache) [[likely]] {
        std::atomic<void **> &own_top = own_cache->tops[class_of(size)];
        void **top = own_top.load(relaxed);
        if (reinterpret_cast<uintptr_t>(top) % sizeof(bin) < bin_bytes) [[likely]] {
            *top = item;
            own_top.store(top + 1, relaxed);
            return;
        }
    }
    release_slowly(item, size);
}

void *MM_realloc_item(void *item, size_t old_size, size_t new_size)
{
    if (new_size > PTRDIFF_MAX)
        return exhausted(MOVA_MEMORY_SIZE_TOO_LARGE);
    unsigned from = class_of(old_size), to = class_of(new_size);
    if (own_pages && from == to)
        return item;
    if (own_pages && std::min(from, to) >= first_large_class) {
        void *resized = large_blocks::resize(item, from, to);
        return resized ? resized : exhausted(MOVA_MEMORY_NO_ROOM_TO_GROW);
    }
    void *moved = MM_alloc_item(new_size);
    if (moved) {
        std::memcpy(moved, item, std::min(old_size, new_size));
        MM_dealloc_item(item, old_size);
    }
    return moved;
}

mova_memory_class mova_memory_statistics_of_size(size_t size)
{
    auto guard = locked(caches_lock);
    return size > PTRDIFF_MAX ? mova_memory_class{} : figures_of(class_of(size));
}

mova_memory_totals mova_memory_statistics(void)
{
    auto guard = locked(caches_lock);
    mova_memory_totals totals{0, 0, 0, mappings::peak, mappings::held};
    for (unsigned i = 0; i < all_classes; i++) {
        mova_memory_class figures = figures_of(i);
        totals.live_blocks += figures.live_blocks;
        totals.live_bytes += figures.live_blocks * figures.block_size;
        totals.cached_bytes += figures.cached_blocks * figures.block_size;
    }
    return totals;
}
