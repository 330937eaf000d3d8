/* SPDX-License-Identifier: MIT */
/* Free blocks that a thread keeps ready for itself: a bin for each class that is not large.

       bin: top, end, begin                 slots of the bin, or elsewhere once they are many
            |    |    |                     +------+---+---+---+---+
            |    |    +-------------------> | null | a | b |   |   |
            |    |       (slot 1)           +------+---+---+---+---+
            +----|-----------------------------------------^       ^
                 +-------------------------------------------------+

   A block is taken from below `top`, where null says that there is none; it is put at `top`, unless that is `end`. Neither
   touches the block, and neither takes a lock.

   An empty bin is refilled with what one word of a page's bitmap has free, to be handed out in order of address: blocks
   allocated in a row lie side by side, however the heap has aged. A full bin gives its older half back.

   How many blocks a bin may hold follows from what the program does with it:
     1. It begins with room for none, and grows, up to 64 blocks or 64 KiB, when it is found empty or full.
     2. It grows further, up to 1024 blocks or 64 KiB, when it is emptied and filled again and again.
     3. All bins of a thread together hold what the thread has room for, which is little at first and becomes more each time
        that many blocks went to and fro between them and the heap.
     4. It has room for none again when it was not emptied for a second.

   Invariants:
     1. The slot below `begin` is null, and no other below `top` is. `begin` <= `top` <= `end`.
     2. A block in a bin is not free in its page.
     3. A bin is its thread's alone, but that others may read `top`; `begin` changes under the lock of all caches.
     4. `room_` is what the thread may hold, less what its bins could hold. */
#ifndef MOVA_HOST_INTERNAL_THREAD_CACHE_H
#define MOVA_HOST_INTERNAL_THREAD_CACHE_H

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <new>

#include <mova/frame/internal/assert.h>
#include <mova/host/internal/heap.h>
#include <mova/host/internal/links.h>
#include <mova/host/internal/locks.h>
#include <mova/host/internal/size_classes.h>

namespace mova {

constexpr size_t slots_of_their_own = 3;

/* One line of the processor's cache. */
struct alignas(8 * sizeof(void *)) bin {
    std::atomic<void **> top{slots + 1};
    void **end = slots + 1, **begin = slots + 1;
    uint8_t growth = 0;                 /* how often it has grown */
    uint8_t batch = 1;                  /* how many blocks the next refill asks for */
    uint8_t turns = 0;                  /* how often it was full after it had been empty */
    bool was_empty : 1 = false;         /* since it was full */
    bool was_empty_of_late : 1 = false; /* since the cache last aged */
    void *slots[1 + slots_of_their_own] = {};

    uint32_t count() const { return static_cast<uint32_t>(top.load(std::memory_order_relaxed) - begin); }
    uint32_t capacity() const { return static_cast<uint32_t>(end - begin); }
    void set_count(uint32_t count) { top.store(begin + count, std::memory_order_relaxed); }

    /* Returns null where the bin is empty. */
    void *pop()
    {
        void **newest = top.load(std::memory_order_relaxed) - 1;
        void *block = *newest;
        if (block) [[likely]]
            top.store(newest, std::memory_order_relaxed);
        return block;
    }

    /* Returns whether there was room. Requires a block: a null would be taken for the bottom. */
    bool push(void *block)
    {
        void **free = top.load(std::memory_order_relaxed);
        if (free == end) [[unlikely]]
            return false;
        *free = block;
        top.store(free + 1, std::memory_order_relaxed);
        return true;
    }
};
static_assert(sizeof(bin) == 8 * sizeof(void *));

class thread_caches;

class thread_cache {
public:
    static constexpr unsigned classes = size_classes::run_classes;

    /* One without room, for threads that have none of their own: every bin is empty and full. */
    constexpr thread_cache() = default;
    explicit thread_cache(thread_caches &all) : all_(&all) {}

    bin &operator[](unsigned index) { return bins_[index]; }

    /* For a bin that is empty, and one that is full. Null where memory has run out. */
    void *take_anew(unsigned index);
    void give_beyond(unsigned index, void *block);

    /* Gives all blocks back. Returns whether there were any. */
    bool flush();

    /* Counts a release that is more than a push. Now and then it looks at the clock, and once a second what has lain unused
       goes back. */
    void tick()
    {
        if (--ticks_until_look_ == 0)
            age();
    }

    /* What has lain unused for a second goes back. */
    void age();

private:
    friend class thread_caches;
    friend void link<>(thread_cache *&, thread_cache *);
    friend void unlink<>(thread_cache *&, thread_cache *);

    static constexpr size_t most_bytes = size_t{64} << 10, first_room = size_t{24} << 10, more_room = size_t{16} << 10,
                            most_room = size_t{4} << 20;
    static constexpr uint32_t usual_most = 64, most = 1024, moves_for_room = 4096, turns_to_grow = 2,
                              ticks_for_a_look = 64;

    /* What a bin may hold after so much growth; from `growth_to_record` on its slots are in a record. */
    static constexpr uint32_t capacities[] = {0, slots_of_their_own, 16, usual_most, 256, most};
    static constexpr uint8_t growth_to_record = 2;

    static constexpr unsigned kind_of_cache = 0;
    static constexpr unsigned kind_of_slots(unsigned growth) { return growth - growth_to_record + 1; }
    static constexpr size_t size_of_slots(unsigned growth) { return (capacities[growth] + 1) * sizeof(void *); }

    static constexpr uint32_t at_most(unsigned index, uint32_t number)
    {
        return std::clamp(static_cast<uint32_t>(most_bytes / size_classes::block_size(index)), uint32_t{1}, number);
    }

    void count_moved(uint32_t blocks);
    void give_oldest(unsigned index, uint32_t count);
    void grow(unsigned index);
    void shrink(unsigned index);
    void resize(unsigned index, uint8_t growth, void **begin, uint32_t capacity);
    void release_slots(unsigned growth, void **begin);

    bin bins_[classes] = {};
    thread_cache *next = nullptr, *prev = nullptr;
    thread_caches *all_ = nullptr;
    size_t room_ = first_room, granted_ = first_room;
    uint32_t moved_ = 0, ticks_until_look_ = ticks_for_a_look, aged_ = 0;
};

/* The caches of all threads over one heap. */
class thread_caches {
public:
    constexpr explicit thread_caches(heap &from) : heap_(from) {}

    heap &blocks() { return heap_; }

    /* Returns a new cache, or null where memory has run out. */
    thread_cache *begin()
    {
        void *room = heap_.take_record(thread_cache::kind_of_cache);
        if (!room)
            return nullptr;
        auto *begun = new (room) thread_cache(*this);
        guard held(lock);
        link(first_, begun);
        return begun;
    }

    /* Leaves the cache's blocks to the others.

       1. The cache leaves the list, and its blocks go back, under one lock: nobody counts them as both live and cached.
       2. The slots of the bins that grew go back, and the cache's own record. */
    void end(thread_cache *ended)
    {
        {
            guard held(lock);
            unlink(first_, ended);
            ended->flush();
        }
        for (const bin &each : ended->bins_)
            ended->release_slots(each.growth, each.begin);
        heap_.give_record(thread_cache::kind_of_cache, ended);
    }

    /* Forgets all caches but one, or none: those of threads that a fork has left behind. */
    void keep_only(thread_cache *kept) MOVA_ANNOTATED(requires_capability(lock))
    {
        first_ = nullptr;
        if (kept)
            link(first_, kept);
    }

    /* Blocks of a class that are cached. */
    size_t cached(unsigned index) MOVA_ANNOTATED(requires_capability(lock))
    {
        size_t count = 0;
        for (thread_cache *each = index < thread_cache::classes ? first_ : nullptr; each; each = each->next)
            count += (*each)[index].count();
        return count;
    }

    static_assert(record_kinds == 1 + std::size(thread_cache::capacities) - thread_cache::growth_to_record);
    static constexpr record_sizes records = {sizeof(thread_cache), thread_cache::size_of_slots(2),
                                             thread_cache::size_of_slots(3), thread_cache::size_of_slots(4),
                                             thread_cache::size_of_slots(5)};

    mutex lock;

private:
    heap &heap_;
    thread_cache *first_ MOVA_ANNOTATED(guarded_by(lock)) = nullptr;
};

/* ---- a thread's cache ---- */

/* The refill.

   1. A bin that has no room for as many blocks as are to be fetched grows.
   2. One word of a bitmap gives up to that many. Twice as many are to be fetched next time.
   3. The last is handed out: the one at the lowest address. */
inline void *thread_cache::take_anew(unsigned index)
{
    bin &own = bins_[index];
    assert(own.count() == 0);
    own.was_empty = own.was_empty_of_late = true;
    if (own.batch > own.capacity() && own.capacity() < at_most(index, usual_most))
        grow(index);
    const uint32_t wanted = std::min(uint32_t{own.batch}, own.capacity());
    count_moved(std::max(wanted, uint32_t{1}));
    if (wanted == 0)
        return all_->blocks().take(index).start;
    const uint32_t count = all_->blocks().take(index, own.begin, wanted);
    if (count == 0)
        return nullptr;
    own.batch = static_cast<uint8_t>(std::min(own.batch * uint32_t{2}, usual_most));
    own.set_count(count - 1);
    return own.begin[count - 1];
}

/* The flush.

   1. A bin grows that has not its usual room yet, or that was emptied and filled for the second time since it grew.
   2. One that is full all the same gives its older half back, or all where it holds one or none. */
inline void thread_cache::give_beyond(unsigned index, void *block)
{
    bin &own = bins_[index];
    assert(own.count() == own.capacity());
    own.turns = static_cast<uint8_t>(std::min(own.turns + own.was_empty, 255));
    own.was_empty = false;
    if (own.capacity() < at_most(index, usual_most) || own.turns >= turns_to_grow)
        grow(index);
    const uint32_t given = own.count() == own.capacity() ? (own.count() + 1) / 2 : 0;
    count_moved(std::max(given, uint32_t{1}));
    if (own.capacity() == 0)
        return all_->blocks().give(index, block);
    if (given != 0)
        give_oldest(index, given);
    own.push(block);
}

inline void thread_cache::give_oldest(unsigned index, uint32_t count)
{
    bin &own = bins_[index];
    assert(count > 0 && count <= own.count());
    const uint32_t kept = own.count() - count;
    all_->blocks().give(index, own.begin, count);
    std::copy_n(own.begin + count, kept, own.begin);
    own.set_count(kept);
}

inline bool thread_cache::flush()
{
    bool flushed = false;
    for (unsigned index = 0; index < classes; ++index) {
        if (bins_[index].count() == 0)
            continue;
        give_oldest(index, bins_[index].count());
        flushed = true;
    }
    return flushed;
}

/* Of a bin that was not emptied for a second some blocks have lain unused. All go back: a few refills replace those that are
   needed, and what a peak left in many bins no longer keeps as many pages from going back. So does what the bin took of the
   thread's room: a program that goes on with other sizes needs it for their bins. */
inline void thread_cache::age()
{
    ticks_until_look_ = ticks_for_a_look;
    const uint32_t now = all_->blocks().now();
    if (now - aged_ <= spare_mappings::kept_for)
        return;
    aged_ = now;
    for (unsigned index = 0; index < classes; ++index) {
        bin &own = bins_[index];
        if (own.capacity() > 0 && !own.was_empty_of_late)
            shrink(index);
        own.was_empty_of_late = false;
    }
    all_->blocks().age();
}

/* Blocks went to or fro between a bin and the heap. Now and then the thread gets more room for that. */
inline void thread_cache::count_moved(uint32_t blocks)
{
    moved_ += blocks;
    if (moved_ < moves_for_room)
        return;
    moved_ = 0;
    const size_t more = std::min(more_room, most_room - granted_);
    granted_ += more;
    room_ += more;
}

/* Where there is room for it. */
inline void thread_cache::grow(unsigned index)
{
    const bin &own = bins_[index];
    if (own.growth + 1u == std::size(capacities))
        return;
    const auto growth = static_cast<uint8_t>(own.growth + 1);
    const uint32_t capacity = at_most(index, capacities[growth]);
    const size_t cost = (capacity - own.capacity()) * size_classes::block_size(index);
    if (cost == 0 || cost > room_)
        return;
    void **begin = bins_[index].slots + 1;
    if (growth >= growth_to_record) {
        auto *slots = static_cast<void **>(all_->blocks().take_record(kind_of_slots(growth)));
        if (!slots)
            return;
        *slots = nullptr;
        begin = slots + 1;
    }
    resize(index, growth, begin, capacity);
}

/* To none. */
inline void thread_cache::shrink(unsigned index)
{
    bin &own = bins_[index];
    if (own.count() > 0)
        give_oldest(index, own.count());
    resize(index, 0, own.slots + 1, 0);
}

/* The bin's blocks stay in their order. What it could hold comes from the room, or goes there. */
inline void thread_cache::resize(unsigned index, uint8_t growth, void **begin, uint32_t capacity)
{
    bin &own = bins_[index];
    void **const old_begin = own.begin;
    room_ += own.capacity() * size_classes::block_size(index);
    room_ -= capacity * size_classes::block_size(index);
    {
        guard held(all_->lock);
        const uint32_t count = own.count();
        std::copy(own.begin, own.begin + count, begin);
        own.begin = begin;
        own.end = begin + capacity;
        own.set_count(count);
    }
    release_slots(own.growth, old_begin);
    own.growth = growth;
    own.turns = 0;
}

/* Gives back the record that holds a bin's slots, if one does. */
inline void thread_cache::release_slots(unsigned growth, void **begin)
{
    if (growth >= growth_to_record)
        all_->blocks().give_record(kind_of_slots(growth), begin - 1);
}

} // namespace mova

#endif
