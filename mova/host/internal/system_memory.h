/* SPDX-License-Identifier: MIT */
/* What the memory service asks of the system. The process has one system; a test makes one that refuses. */
#ifndef MOVA_HOST_INTERNAL_SYSTEM_MEMORY_H
#define MOVA_HOST_INTERNAL_SYSTEM_MEMORY_H

#include <cstddef>
#include <cstdint>

#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

namespace mova {

class system_memory {
public:
    /* Returns `size` bytes of zeros that take up no memory until they are written to, or null. They are at `wish` where
       that is free. */
    virtual void *map(void *wish, size_t size)
    {
        const int flags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE;
        void *start = mmap(wish, size, PROT_READ | PROT_WRITE, flags, -1, 0);
        return start == MAP_FAILED ? nullptr : start;
    }

    /* Returns whether the system took the piece back: it may not, where it would have to keep more mappings apart than it
       can. Then the piece is as it was. */
    virtual bool unmap(void *start, size_t size) { return munmap(start, size) == 0; }

    /* Makes a mapping larger, where it is or elsewhere, by moving pages. Returns its place, or null: then it is as it
       was. */
    virtual void *extend(void *start, size_t old_size, size_t new_size)
    {
        void *extended = mremap(start, old_size, new_size, MREMAP_MAYMOVE);
        return extended == MAP_FAILED ? nullptr : extended;
    }

    /* The bytes may become zeros, and take up no memory until they are written to again: the whole pages among them. */
    virtual void purge(void *start, size_t size)
    {
        const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        const size_t before = -reinterpret_cast<uintptr_t>(start) % page;
        if (size >= before + page)
            madvise(static_cast<char *>(start) + before, (size - before) / page * page, MADV_DONTNEED);
    }

    /* The system may give huge pages to what is written from now on. */
    virtual void prefer_huge_pages(void *start, size_t size) { madvise(start, size, MADV_HUGEPAGE); }

    /* It gives none from now on; nor does it join what is there to huge ones, which would fill what was purged. */
    virtual void refuse_huge_pages(void *start, size_t size) { madvise(start, size, MADV_NOHUGEPAGE); }

    /* Milliseconds since some time, from zero again after 2^32. */
    virtual uint32_t now()
    {
        timespec time = {};
        clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
        return static_cast<uint32_t>(time.tv_sec) * 1000 + static_cast<uint32_t>(time.tv_nsec / 1000000);
    }
};

} // namespace mova

#endif
