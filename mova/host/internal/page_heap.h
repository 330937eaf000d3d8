/* SPDX-License-Identifier: MIT */
/* Blocks of up to 16 KiB: those of one size class lie in pages of 64 KiB. A page whose blocks are all free again serves
   other classes.

   Beside the classes of blocks there are some for what the service itself needs room for; they are not counted as blocks
   of the program.

   Invariants, beside those of page.h and chunks.h:
     1. A block's chunk, page and number follow from its address.
     2. A page is in its class's list exactly while it has a free block and one that is not.
     3. `taken` is the number of the class's blocks that are not free. */
#ifndef MOVA_HOST_INTERNAL_PAGE_HEAP_H
#define MOVA_HOST_INTERNAL_PAGE_HEAP_H

#include <cstddef>
#include <cstdint>
#include <iterator>

#include <mova/frame/internal/assert.h>
#include <mova/host/internal/chunks.h>
#include <mova/host/internal/links.h>
#include <mova/host/internal/locks.h>
#include <mova/host/internal/page.h>
#include <mova/host/internal/size_classes.h>

namespace mova {

/* The sizes of the records that the service needs room for. */
constexpr unsigned record_kinds = 5;
using record_sizes = size_t[record_kinds];

class page_heap {
public:
    constexpr page_heap(chunks &from, const record_sizes &records) : chunks_(from)
    {
        for (unsigned index = 0; index < size_classes::page_classes; ++index)
            classes_[index].block_size = size_classes::block_size(index);
        for (unsigned kind = 0; kind < std::size(records); ++kind)
            classes_[class_of_record(kind)].block_size = records[kind];
    }

    static constexpr unsigned class_of_record(unsigned kind) { return size_classes::page_classes + kind; }

    /* Takes up to `wanted` blocks of a class. Returns their number, which is 0 where memory has run out. */
    uint32_t take(unsigned index, void **blocks, uint32_t wanted)
    {
        size_class &own = classes_[index];
        guard held(own.lock);
        if (!own.pages) {
            page *fresh = fresh_page(own.block_size);
            if (!fresh)
                return 0;
            link(own.pages, fresh);
        }
        page *from = own.pages;
        const uint32_t count = from->take(blocks, wanted);
        if (from->free_blocks == 0)
            unlink(own.pages, from);
        own.taken += count;
        return count;
    }

    void give(unsigned index, void *const *blocks, uint32_t count)
    {
        size_class &own = classes_[index];
        guard held(own.lock);
        assert(own.taken >= count);
        own.taken -= count;
        if (count > 1 && static_cast<char *>(blocks[0]) + own.block_size == blocks[1])
            give_each<true>(own, blocks, count);
        else
            give_each<false>(own, blocks, count);
    }

    /* The number of blocks that are not free. */
    size_t taken(unsigned index)
    {
        guard held(classes_[index].lock);
        return classes_[index].taken;
    }

    void lock() MOVA_ANNOTATED(no_thread_safety_analysis)
    {
        for (size_class &each : classes_)
            each.lock.lock();
    }

    void unlock() MOVA_ANNOTATED(no_thread_safety_analysis)
    {
        for (size_class &each : classes_)
            each.lock.unlock();
    }

private:
    struct size_class {
        mutex lock;
        page *pages MOVA_ANNOTATED(guarded_by(lock)) = nullptr;
        size_t taken MOVA_ANNOTATED(guarded_by(lock)) = 0;
        size_t block_size = 0;
    };

    /* Returns a page of free blocks, or null where memory has run out. */
    page *fresh_page(size_t block_size)
    {
        page *fresh = chunks_.take_page(block_size <= size_classes::small_limit);
        if (fresh)
            fresh->make_free(block_size);
        return fresh;
    }

    /* Takes back blocks of any places. `in_rows` is for those of which many lie side by side. */
    template <bool in_rows>
    void give_each(size_class &own, void *const *blocks, uint32_t count) MOVA_ANNOTATED(requires_capability(own.lock))
    {
        for (uint32_t given = 0; given < count;) {
            page *to = chunks::page_of(blocks[given]);
            if (to->free_blocks == 0)
                link(own.pages, to);
            uint32_t row = 1;
            if constexpr (in_rows)
                row = to->give_row(blocks + given, count - given);
            else
                to->give(blocks[given]);
            given += row;
            if (to->free_blocks == to->blocks) {
                unlink(own.pages, to);
                chunks_.give_page(to);
            }
        }
    }

    chunks &chunks_;
    size_class classes_[size_classes::page_classes + record_kinds];
};

} // namespace mova

#endif
