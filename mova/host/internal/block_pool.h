/* SPDX-License-Identifier: MIT */
/* A pool of movable blocks: the arena, the table of handles, the gaps, and gathering.

   Every gap follows a block, or begins the arena: so it is a number in the record of the block before it, and what a
   released block leaves behind grows that number by itself. The block before the first, the origin, has size 0 and the
   handle 0. In order of address the blocks are a ring that begins and ends at the origin:

       arena     | . . . | A A A A | B B | . . . | C C C |
       origin -> A -> B -> C -> origin
       gap:  3   0    3    0

   A handle is the next number of a counter whose place in the table, its low bits, is free. Three tables side by side have
   one entry a place: what mb_get needs, the rest, and what only large gaps need. When they grow, each handle goes to where
   its low bits say now.

   Invariants:
     1. A live handle stands in its place, and a place that is free has the handle 0. Place 0 is the origin's; it bears
        the handle `none`, which belongs to another place, so that 0 is never taken for a live handle.
     2. Along `next` the blocks lie in order of address, each where the one before it and its gap end; the last gap ends
        where the arena ends. `prev` is the reverse.
     3. Sizes and gaps are multiples of the unit. `live_bytes` is the sum of the sizes, `live_blocks` their number.
     4. The owner of a gap that is not empty is in the index of gaps, in the tree of its size's class and where its bits
        lead, or in the list of one that is, and nothing else is. A class is in the index's set exactly while its tree has
        any.
     5. `rover`, where the next search for neighbours begins, is the origin or a live block. */
#ifndef MOVA_HOST_INTERNAL_BLOCK_POOL_H
#define MOVA_HOST_INTERNAL_BLOCK_POOL_H

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

#include <mova/frame/host.h>
#include <mova/frame/internal/assert.h>
#include <mova/host/internal/gap_classes.h>
#include <mova/host/internal/gap_index.h>
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
    static constexpr mb_handle origin = 0, none = no_gap;

    /* What a lookup needs of a block. */
    struct place {
        char *address;
        mb_handle handle;
    };

    struct block {
        size_t size, gap;
        mb_handle prev, next; /* in order of address */
        gap_links links;      /* in the index of gaps */
    };

    /* Requires room for `budget` bytes, a multiple of the unit, in the arena, and empty_table() as the table. The first
       handles will be those after `last_handle`. */
    block_pool(owned_memory arena, owned_memory table, size_t budget, mb_handle last_handle = 0)
        : arena_(std::move(arena)), statistics_{budget, 0, 0, 0, 0}, last_handle_(last_handle)
    {
        use_table(std::move(table), first_capacity);
        place_of(origin) = {arena_.get(), none};
        block_of(origin) = {0, 0, origin, origin, {}};
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
        return take_memory(capacity * (sizeof(place) + sizeof(block) + sizeof(gap_branches)));
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
        assert(get(handle));
        const block released = block_of(handle);
        assert(block_of(released.prev).next == handle && block_of(released.next).prev == handle);
        if (rover_ == handle)
            rover_ = released.prev;
        const size_t room = take_gap(handle) + take_gap(released.prev) + released.size;
        block_of(released.prev).next = released.next;
        block_of(released.next).prev = released.prev;
        set_gap(released.prev, room);
        gap_marks::hide(place_of(handle).address, released.size);
        place_of(handle) = {nullptr, 0};
        statistics_.live_bytes -= released.size;
        --statistics_.live_blocks;
    }

    const mb_statistics &statistics() const { return statistics_; }

    /* For those who verify the invariants. */
    const place &place_of(mb_handle handle) const { return places_[handle & mask_]; }
    const block &block_of(mb_handle handle) const { return blocks_[handle]; }
    const gap_branches &branches_of(mb_handle handle) const { return blocks_.branches(handle); }
    mb_handle rover() const { return rover_; }
    size_t capacity() const { return mask_ + 1; }
    const char *arena() const { return arena_.get(); }

    /* The parts of the table with the blocks' records. */
    struct records {
        block *blocks;
        gap_branches *all_branches;
        size_t mask;

        block &operator[](mb_handle handle) { return blocks[handle & mask]; }
        const block &operator[](mb_handle handle) const { return blocks[handle & mask]; }
        gap_branches &branches(mb_handle handle) { return all_branches[handle & mask]; }
        const gap_branches &branches(mb_handle handle) const { return all_branches[handle & mask]; }
    };
    const gap_index<records> &gaps() const { return gaps_; }

private:
    static constexpr size_t first_capacity = 64;

    /* A row of neighbours. Those after the first, up to the last, are moved up to the first; all gaps, from that of the
       first to that of the last, then are one. */
    struct row {
        mb_handle first, last;
        size_t bytes; /* to be moved */
        size_t room;  /* of the gaps together */
    };

    place &place_of(mb_handle handle) { return places_[handle & mask_]; }
    block &block_of(mb_handle handle) { return blocks_[handle]; }

    /* ---- the table ---- */

    void use_table(owned_memory table, size_t capacity)
    {
        table_ = std::move(table);
        mask_ = capacity - 1;
        places_ = reinterpret_cast<place *>(table_.get());
        auto *blocks = reinterpret_cast<block *>(places_ + capacity);
        blocks_ = {blocks, reinterpret_cast<gap_branches *>(blocks + capacity), mask_};
        std::fill_n(places_, capacity, place{nullptr, 0});
    }

    /* Leaves a quarter of the places free, for the counter to come upon. */
    bool has_free_place() { return statistics_.live_blocks + 1 < capacity() / 4 * 3 || grow_table(); }

    bool grow_table()
    {
        owned_memory larger = empty_table(2 * capacity());
        if (!larger)
            return false;
        const owned_memory old_table = std::move(table_);
        const place *old_places = places_;
        const records old = blocks_;
        const size_t old_mask = mask_;
        use_table(std::move(larger), 2 * capacity());
        for (size_t i = 0; i <= old_mask; ++i) {
            if (old_places[i].handle == 0)
                continue;
            const mb_handle handle = i == 0 ? origin : old_places[i].handle;
            place_of(handle) = old_places[i];
            block_of(handle) = old.blocks[i];
            blocks_.branches(handle) = old.all_branches[i];
        }
        return true;
    }

    mb_handle new_handle()
    {
        do
            ++last_handle_;
        while (place_of(last_handle_).handle != 0 || last_handle_ == none);
        return last_handle_;
    }

    /* ---- the gaps ---- */

    void set_gap(mb_handle owner, size_t size)
    {
        block_of(owner).gap = size;
        if (size != 0)
            gaps_.insert(blocks_, owner);
    }

    /* Takes the gap out of the index. Returns its size. It is to be set anew. */
    size_t take_gap(mb_handle owner)
    {
        const size_t size = block_of(owner).gap;
        if (size != 0)
            gaps_.remove(blocks_, owner);
        return size;
    }

    /* Returns the owner of the smallest gap that is large enough, or `none`. */
    mb_handle find_gap(size_t size) const { return size == 0 ? origin : gaps_.find(blocks_, size); }

    mb_handle insert_after(mb_handle before, size_t size)
    {
        const mb_handle handle = new_handle();
        const size_t room = take_gap(before);
        assert(room >= size);
        block &neighbour = block_of(before);
        place_of(handle) = {place_of(before).address + neighbour.size, handle};
        block_of(handle) = {size, 0, before, neighbour.next, {}};
        block_of(neighbour.next).prev = handle;
        neighbour.next = handle;
        neighbour.gap = 0;
        set_gap(handle, room - size);
        gap_marks::show(place_of(handle).address, size);
        statistics_.live_bytes += size;
        ++statistics_.live_blocks;
        return handle;
    }

    /* ---- gathering ---- */

    /* Makes a gap of at least `size` bytes, which all gaps together have. Returns its owner.

           | A A A | . . | B B | . . | C | . |          a row from A to C, 5 units of gaps
           | A A A | B B | C | . . . . . |

       1. The cheapest row of neighbours is sought whose gaps are enough.
       2. The gap after its first block goes: what follows will lie there.
       3. Each block after that is moved down to the end of the one before, and its gap goes too.
       4. All of it together becomes the gap after the last. */
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
        ++statistics_.moves;
        statistics_.moved_bytes += size;
    }

    /* Returns a row with gaps of `size` bytes together: the cheapest on the way from the rover, which ends where looking
       further costs as much as moving the best row so far. All rows together are one that has the gaps.

       A window over the ring of blocks is extended by a block at a time. Whenever its gaps are enough without the first, it
       is shrunk; so it is the shortest row that ends there. At the end of the arena it starts again at the origin. */
    row find_row(size_t size)
    {
        constexpr size_t bytes_for_a_look = 256;
        row best = {none, none, SIZE_MAX, 0};
        row window = row_at(rover_);
        bool came_round = rover_ == origin;
        for (size_t looked = 0; looked < best.bytes; looked += bytes_for_a_look) {
            while (room_after_first(window) >= size)
                shrink(window);
            if (window.room >= size && window.bytes < best.bytes)
                best = window;
            if (!is_at_end(window))
                extend(window);
            else if (std::exchange(came_round, true))
                break;
            else
                window = row_at(origin);
        }
        rover_ = window.last;
        assert(best.first != none);
        return best;
    }

    row row_at(mb_handle first) const { return {first, first, 0, block_of(first).gap}; }
    size_t room_after_first(const row &of) const { return of.room - block_of(of.first).gap; }
    bool is_at_end(const row &of) const { return block_of(of.last).next == origin; }

    void extend(row &window) const
    {
        window.last = block_of(window.last).next;
        window.bytes += block_of(window.last).size;
        window.room += block_of(window.last).gap;
    }

    void shrink(row &window) const
    {
        window.room -= block_of(window.first).gap;
        window.first = block_of(window.first).next;
        window.bytes -= block_of(window.first).size;
    }

    owned_memory arena_, table_;
    place *places_;
    records blocks_;
    size_t mask_;
    mb_statistics statistics_;
    mb_handle last_handle_;
    mb_handle rover_ = origin;
    gap_index<records> gaps_;
};

} // namespace mova

#endif
