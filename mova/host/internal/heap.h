/* SPDX-License-Identifier: MIT */
/* The memory service without its threads: where blocks come from, by size class, and where they go back.

       small and page blocks    run blocks           large blocks
       page_heap                run_blocks           large_blocks
            |  pages of 64 KiB      |  units of 4 KiB     |
            v                       v                     |
       chunks of 2 MiB, some of them spare                |  some of them spare
            |                                             |
            v                                             v
       mappings: address space of a system_memory

   The process has one heap over the system; a test makes its own, over a system that refuses.

   Locks are taken in the order thread caches, size class, chunks; large blocks have one of their own. No error is raised
   under one. */
#ifndef MOVA_HOST_INTERNAL_HEAP_H
#define MOVA_HOST_INTERNAL_HEAP_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <mova/host/internal/chunks.h>
#include <mova/host/internal/large_blocks.h>
#include <mova/host/internal/mappings.h>
#include <mova/host/internal/page_heap.h>
#include <mova/host/internal/run_blocks.h>
#include <mova/host/internal/size_classes.h>
#include <mova/host/internal/system_memory.h>

namespace mova {

class heap {
public:
    constexpr heap(system_memory &system, const record_sizes &records)
        : mappings_(system), chunks_(mappings_), pages_(chunks_, records), runs_(chunks_), large_(mappings_)
    {
    }

    /* Takes up to `wanted` blocks of a class that is not large. Returns their number, which is 0 where memory has run
       out. */
    uint32_t take(unsigned index, void **blocks, uint32_t wanted)
    {
        if (index < size_classes::page_classes)
            return pages_.take(index, blocks, wanted);
        uint32_t count = 0;
        while (count < wanted && (blocks[count] = runs_.take(index)))
            ++count;
        return count;
    }

    /* Takes a block of any class; every byte of it is 0 where it is fresh. */
    spare_mappings::taken take(unsigned index)
    {
        if (size_classes::is_large(index))
            return large_.take(index);
        void *block = nullptr;
        return {take(index, &block, 1) == 1 ? block : nullptr, false};
    }

    void give(unsigned index, void *const *blocks, uint32_t count)
    {
        if (index < size_classes::page_classes)
            return pages_.give(index, blocks, count);
        for (uint32_t i = 0; i < count; ++i)
            give(index, blocks[i]);
    }

    void give(unsigned index, void *block)
    {
        if (index < size_classes::page_classes)
            pages_.give(index, &block, 1);
        else if (size_classes::is_large(index))
            large_.give(index, block);
        else
            runs_.give(index, block);
    }

    /* Returns the new place of a large block that becomes another, or null: then it is as it was. Where the system refuses
       to move pages, bytes are copied. */
    void *resize(void *block, unsigned from, unsigned to)
    {
        if (void *resized = large_.resize(block, from, to))
            return resized;
        void *copy = large_.take(to).start;
        if (copy) {
            std::memcpy(copy, block, std::min(size_classes::block_size(from), size_classes::block_size(to)));
            large_.give(from, block);
        }
        return copy;
    }

    void *take_record(unsigned kind)
    {
        void *record = nullptr;
        return pages_.take(page_heap::class_of_record(kind), &record, 1) == 1 ? record : nullptr;
    }

    void give_record(unsigned kind, void *record) { pages_.give(page_heap::class_of_record(kind), &record, 1); }

    /* Milliseconds. */
    uint32_t now() { return mappings_.now(); }

    /* Gives back what has not been in use for some time. */
    void age()
    {
        large_.age();
        chunks_.age();
    }

    /* Gives back all address space that is not in use. Returns whether there was any. */
    bool give_back()
    {
        const bool large = large_.trim();
        return chunks_.trim() || large;
    }

    /* Gives back also the memory of what lies unused between blocks that are in use. */
    void trim()
    {
        give_back();
        chunks_.purge();
    }

    /* The number of blocks of a class that are not free. */
    size_t taken(unsigned index)
    {
        if (index < size_classes::page_classes)
            return pages_.taken(index);
        return size_classes::is_large(index) ? large_.live(index) : runs_.taken(index);
    }

    size_t held() const { return mappings_.held(); }
    size_t peak() const { return mappings_.peak(); }

    /* All locks, as a fork needs them. */
    void lock() MOVA_ANNOTATED(no_thread_safety_analysis)
    {
        pages_.lock();
        chunks_.lock.lock();
        large_.lock.lock();
    }

    void unlock() MOVA_ANNOTATED(no_thread_safety_analysis)
    {
        large_.lock.unlock();
        chunks_.lock.unlock();
        pages_.unlock();
    }

private:
    mappings mappings_;
    chunks chunks_;
    page_heap pages_;
    run_blocks runs_;
    large_blocks large_;
};

} // namespace mova

#endif
