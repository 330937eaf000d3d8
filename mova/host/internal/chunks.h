/* SPDX-License-Identifier: MIT */
/* Chunks: pieces of 2 MiB, at multiples of 2 MiB, from which pages and runs are cut.

       +---------+--------+------+--------+---------------+------+
       | records | page 1 | # #  | page 3 | # # # # # # # | . .  |      #: units of 4 KiB in runs, . free
       +---------+--------+------+--------+---------------+------+

   A page takes 16 units, at a multiple of 16. A run takes as many as it needs, anywhere: so little of a block of 16 to
   256 KiB lies fallow. The records of the pages lie in the first nine units.

   The chunks that have free units hang in lists by the longest run of these: lists 1 to 63, and one for 64 units, the most
   that a run has, and more. So the chunk that has just enough is found at once. Those that have room for a page hang in a
   list of their own beside.

   Invariants:
     1. A set bit is a free unit. `free` is the number of these, `longest` the length of the longest run, or 64 if that is
        less, and `free_pages` has a bit for each page all of whose units are free.
     2. A chunk is in the list of its `longest` if that is not 0. A bit of `filled_` is set exactly while the list of that
        number has a chunk.
     3. A chunk is in the list of those with pages exactly while `free_pages` is not 0.
     4. A chunk with none but free units is not in use, and spare. */
#ifndef MOVA_HOST_INTERNAL_CHUNKS_H
#define MOVA_HOST_INTERNAL_CHUNKS_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include <mova/frame/internal/assert.h>
#include <mova/host/internal/links.h>
#include <mova/host/internal/locks.h>
#include <mova/host/internal/mappings.h>
#include <mova/host/internal/page.h>
#include <mova/host/internal/size_classes.h>
#include <mova/host/internal/spare_mappings.h>
#include <mova/host/internal/unit_set.h>

namespace mova {

class chunks {
public:
    constexpr explicit chunks(mappings &from) : mappings_(from), spare_(from, most_spare_bytes, chunk_size) {}

    /* Returns the record of a page, or null where memory has run out. Huge pages are for chunks that small blocks will
       fill, in a program that has filled some: elsewhere they would make resident what nobody writes to. */
    page *take_page(bool dense)
    {
        guard held(lock);
        chunk *from = with_pages_ ? with_pages_->in : add(dense);
        if (!from)
            return nullptr;
        const auto index = static_cast<unsigned>(std::countr_zero(from->free_pages));
        take(*from, index * unit_set::in_a_page, unit_set::in_a_page);
        from->pages[index].start = reinterpret_cast<char *>(from) + index * page_size;
        return &from->pages[index];
    }

    void give_page(const page *given)
    {
        guard held(lock);
        give(given->start, unit_set::in_a_page);
    }

    /* Returns a run of units, or null where memory has run out. */
    void *take_run(unsigned units)
    {
        guard held(lock);
        const uint64_t fitting = filled_ & ~(bit_of(units) - 1);
        chunk *from = fitting != 0 ? lists_[std::countr_zero(fitting)]->in : add(false);
        if (!from)
            return nullptr;
        const unsigned first = from->free_units.find(units);
        assert(first < unit_set::all);
        take(*from, first, units);
        return reinterpret_cast<char *>(from) + first * unit_size;
    }

    void give_run(void *run, unsigned units)
    {
        guard held(lock);
        give(run, units);
    }

    /* The record of the page that a block lies in. In integers: as an element of an array, its address is computed anew
       for each field. */
    static page *page_of(const void *block)
    {
        const uintptr_t address = reinterpret_cast<uintptr_t>(block), index = address % chunk_size / page_size;
        return reinterpret_cast<page *>(address - address % chunk_size + offsetof(chunk, pages) + index * sizeof(page));
    }

    /* Gives back the chunks that are spare, and of the others the memory of free units, that have lain unused for some
       time. Of these it is one round at least in which none of the chunk's units came or went. */
    void age()
    {
        guard held(lock);
        spare_.age();
        const uint32_t now = mappings_.now();
        if (now - round_began_ <= spare_mappings::kept_for)
            return;
        for_each_with_free([this, round = round_](chunk &each) {
            if (each.has_used_units && each.changed_in_round != round)
                purge_units(each);
        });
        ++round_;
        round_began_ = now;
    }

    /* Gives back the address space of chunks that are not in use. Returns whether there was any. */
    bool trim()
    {
        guard held(lock);
        return spare_.trim();
    }

    /* Gives back the memory of all units that are free in the others. */
    void purge()
    {
        guard held(lock);
        for_each_with_free([&](chunk &each) { purge_units(each); });
    }

    mutex lock;

private:
    struct chunk;

    struct node {
        node *next, *prev;
        chunk *in;
    };

    struct chunk {
        node by_longest, with_pages;
        unsigned longest, free;
        uint32_t free_pages;
        uint32_t changed_in_round; /* units came or went last */
        bool has_used_units;       /* some that are free were in use since the last purge */
        bool has_huge_pages;       /* they were asked for; it stays so while the chunk is spare */
        unit_set free_units;
        page pages[chunk_size / page_size];
    };

    static constexpr unsigned most_units = 64;
    static constexpr unsigned record_units = (sizeof(chunk) + unit_size - 1) / unit_size,
                              usable = unit_set::all - record_units;
    static_assert(size_classes::run_limit == most_units * unit_size);
    static_assert(record_units < unit_set::in_a_page);

    static constexpr unsigned class_of_chunks = size_classes::class_of(chunk_size);
    static_assert(size_classes::block_size(class_of_chunks) == chunk_size);

    static constexpr size_t ordinary_chunks = 8, most_spare_bytes = size_t{128} << 20;

    static constexpr uint64_t bit_of(unsigned units) { return uint64_t{1} << (units - 1); }

    chunk *add(bool dense) MOVA_ANNOTATED(requires_capability(lock))
    {
        const auto [start, fresh] = spare_.take(class_of_chunks);
        if (!start)
            return nullptr;
        auto *added = static_cast<chunk *>(start);
        if (fresh)
            added->has_huge_pages = false;
        if (dense && spare_.in_use() > ordinary_chunks)
            use_huge_pages(*added, true);
        added->by_longest.in = added->with_pages.in = added;
        added->longest = added->free = 0;
        added->free_pages = 0;
        added->has_used_units = false;
        added->free_units = {};
        change(*added, record_units, usable);
        added->free = usable;
        return added;
    }

    void take(chunk &from, unsigned first, unsigned units) MOVA_ANNOTATED(requires_capability(lock))
    {
        from.free -= units;
        change(from, first, units);
        mappings_.count_used(units * unit_size);
    }

    void give(void *start, unsigned units) MOVA_ANNOTATED(requires_capability(lock))
    {
        const uintptr_t offset = reinterpret_cast<uintptr_t>(start) % chunk_size;
        auto *to = reinterpret_cast<chunk *>(static_cast<char *>(start) - offset);
        to->free += units;
        to->has_used_units = true;
        change(*to, static_cast<unsigned>(offset / unit_size), units);
        mappings_.count_used(-(units * unit_size));
        if (to->free < usable)
            return;
        unlist(*to);
        unlink(with_pages_, &to->with_pages);
        spare_.give(class_of_chunks, to);
    }

    /* Makes units free that are taken, or the reverse, and puts the chunk into the lists where it belongs. */
    void change(chunk &in, unsigned first, unsigned units) MOVA_ANNOTATED(requires_capability(lock))
    {
        in.changed_in_round = round_;
        in.free_units.turn(first, units);
        const unsigned longest = in.free_units.longest(most_units);
        if (longest != in.longest) {
            unlist(in);
            in.longest = longest;
            enlist(in);
        }
        const uint32_t before = in.free_pages;
        in.free_pages = in.free_units.pages();
        if (before == 0 && in.free_pages != 0)
            link(with_pages_, &in.with_pages);
        else if (before != 0 && in.free_pages == 0)
            unlink(with_pages_, &in.with_pages);
    }

    void enlist(chunk &each) MOVA_ANNOTATED(requires_capability(lock))
    {
        if (each.longest == 0)
            return;
        link(lists_[each.longest - 1], &each.by_longest);
        filled_ |= bit_of(each.longest);
    }

    void unlist(chunk &each) MOVA_ANNOTATED(requires_capability(lock))
    {
        if (each.longest == 0)
            return;
        node *&first = lists_[each.longest - 1];
        unlink(first, &each.by_longest);
        if (!first)
            filled_ &= ~bit_of(each.longest);
    }

    template <class Work>
    void for_each_with_free(Work work) MOVA_ANNOTATED(requires_capability(lock))
    {
        for (const node *each : lists_) {
            for (const node *at = each; at; at = at->next)
                work(*at->in);
        }
    }

    void use_huge_pages(chunk &in, bool use)
    {
        if (use && !in.has_huge_pages)
            mappings_.prefer_huge_pages(&in, chunk_size);
        if (!use && in.has_huge_pages)
            mappings_.refuse_huge_pages(&in, chunk_size);
        in.has_huge_pages = use;
    }

    void purge_units(chunk &in)
    {
        use_huge_pages(in, false);
        in.has_used_units = false;
        for (unsigned first = in.free_units.next_free(0), end; first < unit_set::all;
             first = in.free_units.next_free(end)) {
            end = in.free_units.next_taken(first);
            mappings_.purge(reinterpret_cast<char *>(&in) + first * unit_size, (end - first) * unit_size);
        }
    }

    mappings &mappings_;
    spare_mappings spare_ MOVA_ANNOTATED(guarded_by(lock));
    node *lists_[most_units] MOVA_ANNOTATED(guarded_by(lock)) = {};
    node *with_pages_ MOVA_ANNOTATED(guarded_by(lock)) = nullptr;
    uint64_t filled_ MOVA_ANNOTATED(guarded_by(lock)) = 0;
    uint32_t round_ MOVA_ANNOTATED(guarded_by(lock)) = 0;
    uint32_t round_began_ MOVA_ANNOTATED(guarded_by(lock)) = 0;
};

} // namespace mova

#endif
