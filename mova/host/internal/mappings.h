/* SPDX-License-Identifier: MIT */
/* Address space from the system, and the count of it. */
#ifndef MOVA_HOST_INTERNAL_MAPPINGS_H
#define MOVA_HOST_INTERNAL_MAPPINGS_H

#include <atomic>
#include <cstddef>
#include <cstdint>

#include <mova/host/internal/system_memory.h>

namespace mova {

class mappings {
public:
    constexpr explicit mappings(system_memory &system) : system_(system) {}

    /* Bytes of address space held from the system, and the most that ever was in use of it. */
    size_t held() const { return held_; }
    size_t peak() const { return peak_; }

    /* Counts bytes that came into use, or went out of use where the change is negative, as a size_t. */
    void count_used(size_t change)
    {
        const size_t now = used_.fetch_add(change) + change;
        for (size_t most = peak_; now > most && !peak_.compare_exchange_weak(most, now);)
            continue;
    }

    /* Returns `size` bytes of zeros that take up no memory until they are written to, or null. */
    void *map(size_t size, void *wish = nullptr)
    {
        void *start = system_.map(wish, size);
        if (start)
            held_ += size;
        return start;
    }

    /* The same, at a multiple of `alignment`, a power of two.

       1. The system may happen to give such a place.
       2. Else it is likely to have one just below the place that it gave, where its mappings grow to.
       3. Else more is mapped than is asked for, and what lies outside the aligned part is given back. */
    void *map_aligned(size_t size, size_t alignment)
    {
        void *start = map(size);
        if (!start || is_aligned(start, alignment))
            return start;
        if (unmap(start, size)) {
            start = map(size, aligned_below(start, alignment));
            if (!start || is_aligned(start, alignment))
                return start;
            unmap(start, size);
        }
        return cut_aligned(size, alignment);
    }

    /* Returns whether the system took the piece back. If not, it stays as it was, and held. */
    bool unmap(void *start, size_t size)
    {
        if (!system_.unmap(start, size))
            return false;
        held_ -= size;
        return true;
    }

    /* Makes a mapping larger by moving pages; no byte is copied. Returns its place, or null: then it is as it was. */
    void *extend(void *start, size_t old_size, size_t new_size)
    {
        void *extended = system_.extend(start, old_size, new_size);
        if (extended)
            held_ += new_size - old_size;
        return extended;
    }

    void purge(void *start, size_t size) { system_.purge(start, size); }
    void prefer_huge_pages(void *start, size_t size) { system_.prefer_huge_pages(start, size); }
    void refuse_huge_pages(void *start, size_t size) { system_.refuse_huge_pages(start, size); }
    uint32_t now() { return system_.now(); }

private:
    static bool is_aligned(void *start, size_t alignment)
    {
        return reinterpret_cast<uintptr_t>(start) % alignment == 0;
    }

    static void *aligned_below(void *start, size_t alignment)
    {
        return static_cast<char *>(start) - reinterpret_cast<uintptr_t>(start) % alignment;
    }

    void *cut_aligned(size_t size, size_t alignment)
    {
        auto *start = static_cast<char *>(map(size + alignment));
        if (!start)
            return nullptr;
        const size_t before = -reinterpret_cast<uintptr_t>(start) % alignment;
        if (before != 0)
            unmap(start, before);
        unmap(start + before + size, alignment - before);
        return start + before;
    }

    system_memory &system_;
    std::atomic<size_t> held_{0}, used_{0}, peak_{0};
};

} // namespace mova

#endif
