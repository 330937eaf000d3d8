/* A pool of movable blocks: the arena, the table of handles, the gaps, and gathering.

   Every gap follows a block, or begins the arena: so it is a number in the record of the block before it, and what a
   released block leaves behind grows that number by itself. The block before the first, the origin, has size 0 and the
   handle 0. In order of address the blocks are a ring that begins and ends at the origin:

       arena     | . . . | A A A A | B B | . . . | C C C |
       origin -> A -> B -> C -> origin
       gap:  3   0    3    0

   A handle is the next number of a counter whose place in the table, its low bits, is free. Two tables side by side have
   one entry a place: what mb_get needs, and the rest. When they grow, each handle goes to where its low bits say now.

   Invariants:
     1. A live handle stands in its place, and a place that is free has the handle 0. Place 0 is the origin's; it bears
        the handle `none`, which belongs to another place, so that 0 is never taken for a live handle.
     2. Along `next` the blocks lie in order of address, each where the one before it and its gap end; the last gap ends
        where the arena ends. `prev` is the reverse.
     3. Sizes and gaps are multiples of the unit. `live_bytes` is the sum of the sizes, `live_blocks` their number.
     4. The owner of a gap that is not empty is in the list of the gap's class, and nothing else is. A class is in the set
        exactly while its list has any.
     5. `rover`, where the next search for neighbours begins, is the origin or a live block. */
#ifndef MOVA_HOST_INTERNAL_BLOCK_POOL_H
#define MOVA_HOST_INTERNAL_BLOCK_POOL_H

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

#include <mova/frame/host.h>
#include <mova/host/internal/gap_classes.h>
#include <mova/host/internal/gap_marks.h>
#include <mova/host/memory_blocks.h>

namespace mova {

/* Memory of the memory service. Null where that had none and its error's handler returned. */
struct give_back {
    size_t size;
    void operator()(char *memory) const { MM_dealloc_item(memory, size); }
};
using owned_memory = std::unique_ptr<char, give_back>;

inline owned_memory take_memory(size_t size)
{
    return owned_memory(static_cast<char *>(MM_alloc_item(size)), give_back{size});
}

class block_pool {
public:
    static constexpr mb_handle origin = 0, none = ~mb_handle{0};

    /* What a lookup needs of a block. */
    struct place {
        char *address;
        mb_handle handle;
    };

    struct block {
        size_t size, gap;
        mb_handle prev, next;         /* in order of address */
        mb_handle gap_prev, gap_next; /* in the list of the gap's class; `none` ends it */
    };

    /* Requires room for `budget` bytes, a multiple of the unit, in the arena, and empty_table() as the table. The first
       handles will be those after `last_handle`. */
    block_pool(owned_memory arena, owned_memory table, size_t budget, mb_handle last_handle = 0)
        : arena_(std::move(arena)), statistics_{budget, 0, 0, 0, 0}, last_handle_(last_handle)
    {
        std::fill_n(heads_, gap_classes::count, none);
        use_table(std::move(table), first_capacity);
        place_of(origin) = {arena_.get(), none};
        block_of(origin) = {0, 0, origin, origin, none, none};
        set_gap(origin, budget);
        gap_marks::hide(arena_.get(), budget);
    }

    ~block_pool() { gap_marks::show(arena_.get(), statistics_.budget); }

    static constexpr size_t occupied_by(size_t size)
    {
        return (size + gap_classes::unit - 1) / gap_classes::unit * gap_classes::unit;
    }

    static owned_memory empty_table(size_t capacity = first_capacity)
    {
        return take_memory(capacity * (sizeof(place) + sizeof(block)));
    }

    /* Returns the address of a live block, else null. */
    void *get(mb_handle handle) const
    {
        const place &looked_up = place_of(handle);
        return looked_up.handle == handle ? looked_up.address : nullptr;
    }

    /* Returns 0 where there is no room for the block, or for its record. */
    mb_handle allocate(size_t size)
    {
        if (size > statistics_.budget - statistics_.live_bytes || !has_free_place())
            return 0;
        const size_t occupied = occupied_by(size);
        mb_handle before = find_gap(occupied);
        if (before == none)
            before = gather(occupied);
        return insert_after(before, occupied);
    }

    /* Requires a live block. */
    void release(mb_handle handle)
    {
        const block released = block_of(handle);
        if (rover_ == handle)
            rover_ = released.prev;
        const size_t room = take_gap(handle) + take_gap(released.prev) + released.size;
        block_of(released.prev).next = released.next;
        block_of(released.next).prev = released.prev;
        set_gap(released.prev, room);
        gap_marks::hide(place_of(handle).address, released.size);
        place_of(handle) = {nullptr, 0};
        statistics_.live_bytes -= released.size;
        statistics_.live_blocks--;
    }

    const mb_statistics &statistics() const { return statistics_; }

    /* For those who verify the invariants. */
    const place &place_of(mb_handle handle) const { return places_[handle & mask_]; }
    const block &block_of(mb_handle handle) const { return blocks_[handle & mask_]; }
    mb_handle first_of_class(unsigned index) const { return heads_[index]; }
    bool has_class(unsigned index) const { return classes_.first_from(index) == index; }
    mb_handle rover() const { return rover_; }
    size_t capacity() const { return mask_ + 1; }
    const char *arena() const { return arena_.get(); }

private:
    static constexpr size_t first_capacity = 64;

    /* So many gaps of one class are looked at for the one that fits best; all, before anything is moved. */
    static constexpr size_t most_looked_at = 8;

    /* A row of neighbours. Those after the first, up to the last, are moved up to the first; all gaps, from that of the
       first to that of the last, then are one. */
    struct row {
        mb_handle first, last;
        size_t bytes; /* to be moved */
    };

    place &place_of(mb_handle handle) { return places_[handle & mask_]; }
    block &block_of(mb_handle handle) { return blocks_[handle & mask_]; }

    /* ---- the table ---- */

    void use_table(owned_memory table, size_t capacity)
    {
        table_ = std::move(table);
        mask_ = capacity - 1;
        places_ = reinterpret_cast<place *>(table_.get());
        blocks_ = reinterpret_cast<block *>(places_ + capacity);
        std::fill_n(places_, capacity, place{nullptr, 0});
    }

    /* Leaves a quarter of the places free, for the counter to come upon. */
    bool has_free_place() { return statistics_.live_blocks + 1 < capacity() / 4 * 3 || grow_table(); }

    bool grow_table()
    {
        owned_memory larger = empty_table(2 * capacity());
        if (!larger)
            return false;
        const owned_memory old = std::move(table_);
        const place *old_places = places_;
        const block *old_blocks = blocks_;
        const size_t old_mask = mask_;
        use_table(std::move(larger), 2 * capacity());
        for (size_t i = 0; i <= old_mask; i++) {
            if (old_places[i].handle == 0)
                continue;
            const mb_handle handle = i == 0 ? origin : old_places[i].handle;
            place_of(handle) = old_places[i];
            block_of(handle) = old_blocks[i];
        }
        return true;
    }

    mb_handle new_handle()
    {
        do
            last_handle_++;
        while (place_of(last_handle_).handle != 0 || last_handle_ == none);
        return last_handle_;
    }

    /* ---- the gaps ---- */

    void set_gap(mb_handle owner, size_t size)
    {
        block_of(owner).gap = size;
        if (size == 0)
            return;
        const unsigned index = gap_classes::class_of(size);
        mb_handle &head = heads_[index];
        block_of(owner).gap_prev = none;
        block_of(owner).gap_next = head;
        if (head == none)
            classes_.insert(index);
        else
            block_of(head).gap_prev = owner;
        head = owner;
    }

    /* Takes the gap out of its class's list. Returns its size. It is to be set anew. */
    size_t take_gap(mb_handle owner)
    {
        const block &taken = block_of(owner);
        if (taken.gap == 0)
            return 0;
        const unsigned index = gap_classes::class_of(taken.gap);
        (taken.gap_prev == none ? heads_[index] : block_of(taken.gap_prev).gap_next) = taken.gap_next;
        if (taken.gap_next != none)
            block_of(taken.gap_next).gap_prev = taken.gap_prev;
        if (heads_[index] == none)
            classes_.erase(index);
        return taken.gap;
    }

    /* Returns the owner of a gap that is large enough, or `none`. */
    mb_handle find_gap(size_t size) const
    {
        if (size == 0)
            return origin;
        const unsigned own = gap_classes::class_of(size);
        const mb_handle found = best_of_class(own, size, most_looked_at);
        if (found != none)
            return found;
        const unsigned larger = classes_.first_from(own + 1);
        if (larger != gap_classes::count)
            return best_of_class(larger, size, most_looked_at);
        return best_of_class(own, size, SIZE_MAX);
    }

    mb_handle best_of_class(unsigned index, size_t size, size_t most) const
    {
        mb_handle best = none;
        mb_handle owner = heads_[index];
        for (size_t looked_at = 0; owner != none && looked_at < most; looked_at++) {
            const block &looked_up = block_of(owner);
            if (looked_up.gap == size)
                return owner;
            if (looked_up.gap > size && (best == none || looked_up.gap < block_of(best).gap))
                best = owner;
            owner = looked_up.gap_next;
        }
        return best;
    }

    mb_handle insert_after(mb_handle before, size_t size)
    {
        const mb_handle handle = new_handle();
        const size_t room = take_gap(before);
        block &neighbour = block_of(before);
        place_of(handle) = {place_of(before).address + neighbour.size, handle};
        block_of(handle) = {size, 0, before, neighbour.next, none, none};
        block_of(neighbour.next).prev = handle;
        neighbour.next = handle;
        neighbour.gap = 0;
        set_gap(handle, room - size);
        gap_marks::show(place_of(handle).address, size);
        statistics_.live_bytes += size;
        statistics_.live_blocks++;
        return handle;
    }

    /* ---- gathering ---- */

    /* Makes a gap of at least `size` bytes, which all gaps together have. Returns its owner. */
    mb_handle gather(size_t size)
    {
        const row cheapest = find_row(size);
        size_t room = take_gap(cheapest.first);
        block_of(cheapest.first).gap = 0;
        char *to = end_of(cheapest.first);
        gap_marks::show(to, room);
        for (mb_handle each = cheapest.first; each != cheapest.last;) {
            each = block_of(each).next;
            gap_marks::show(end_of(each), block_of(each).gap);
            room += take_gap(each);
            block_of(each).gap = 0;
            move(each, to);
            to += block_of(each).size;
        }
        set_gap(cheapest.last, room);
        gap_marks::hide(to, room);
        return cheapest.last;
    }

    char *end_of(mb_handle handle) const { return place_of(handle).address + block_of(handle).size; }

    void move(mb_handle handle, char *to)
    {
        const size_t size = block_of(handle).size;
        std::memmove(to, place_of(handle).address, size);
        place_of(handle).address = to;
        statistics_.moves++;
        statistics_.moved_bytes += size;
    }

    /* Returns a row with gaps of `size` bytes together: the cheapest on the way from the rover, which ends where looking
       further costs as much as moving the best row so far. All rows together are one that has the gaps. */
    row find_row(size_t size)
    {
        constexpr size_t bytes_for_a_look = 256;
        row best = {none, none, SIZE_MAX};
        row tried = {rover_, rover_, 0};
        size_t room = block_of(rover_).gap, looked = 0;
        bool whole = rover_ == origin;
        while (looked < best.bytes) {
            while (room - block_of(tried.first).gap >= size) {
                room -= block_of(tried.first).gap;
                tried.first = block_of(tried.first).next;
                tried.bytes -= block_of(tried.first).size;
            }
            if (room >= size && tried.bytes < best.bytes)
                best = tried;
            tried.last = block_of(tried.last).next;
            if (tried.last == origin && std::exchange(whole, true))
                break;
            if (tried.last == origin) {
                tried = {origin, origin, 0};
                room = 0;
            }
            tried.bytes += block_of(tried.last).size;
            room += block_of(tried.last).gap;
            looked += bytes_for_a_look;
        }
        rover_ = tried.last;
        return best;
    }

    owned_memory arena_, table_;
    place *places_;
    block *blocks_;
    size_t mask_;
    mb_statistics statistics_;
    mb_handle last_handle_;
    mb_handle rover_ = origin;
    gap_classes::class_set classes_;
    mb_handle heads_[gap_classes::count];
};

} // namespace mova

#endif
