/* Address space from the system, placed so that huge pages fit into it. */
#ifndef MOVA_HOST_INTERNAL_MAPPINGS_H
#define MOVA_HOST_INTERNAL_MAPPINGS_H

#include <atomic>
#include <cstddef>
#include <cstdint>

#include <sys/mman.h>

namespace mova::mappings {

/* A mapping of this size or more begins at a multiple of it. */
constexpr size_t alignment = size_t{2} << 20;

/* The pages that the system is asked for. It may decline to use huge ones, which changes nothing but the speed. */
enum class kind { ordinary, huge };

/* Bytes of address space: held from the system; of these in use for blocks; and the most that ever was in use. */
inline constinit std::atomic<size_t> held{0}, used{0}, peak{0};

/* Counts bytes that came into use, or went out of use where the change is negative, as a size_t. */
inline void count_used(size_t change)
{
    size_t now = used.fetch_add(change) + change;
    for (size_t most = peak; now > most && !peak.compare_exchange_weak(most, now);)
        continue;
}

inline bool well_aligned(const void *start, size_t size)
{
    return size < alignment || reinterpret_cast<uintptr_t>(start) % alignment == 0;
}

inline void *reserve(size_t size)
{
    int flags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE;
    void *start = mmap(nullptr, size, PROT_READ | PROT_WRITE, flags, -1, 0);
    return start == MAP_FAILED ? nullptr : start;
}

/* Reserves more than is asked for and gives back what lies outside the aligned part. */
inline void *reserve_aligned(size_t size)
{
    auto *start = static_cast<char *>(reserve(size + alignment));
    if (!start)
        return nullptr;
    size_t before = -reinterpret_cast<uintptr_t>(start) % alignment;
    if (before != 0)
        munmap(start, before);
    munmap(start + before + size, alignment - before);
    return start + before;
}

/* Returns `size` bytes of zeros that take up no memory until they are written to, or null. */
inline void *map(size_t size, kind wanted)
{
    void *start = reserve(size);
    if (start && !well_aligned(start, size)) {
        munmap(start, size);
        start = reserve_aligned(size);
    }
    if (!start)
        return nullptr;
    if (wanted == kind::huge)
        madvise(start, size, MADV_HUGEPAGE);
    held += size;
    return start;
}

inline void unmap(void *start, size_t size)
{
    munmap(start, size);
    held -= size;
}

/* Moves the pages of a mapping to a new one of another size. They keep their kind. */
inline void *move(void *start, size_t old_size, size_t new_size)
{
    void *room = map(new_size, kind::ordinary);
    if (!room)
        return nullptr;
    void *moved = mremap(start, old_size, new_size, MREMAP_MAYMOVE | MREMAP_FIXED, room);
    held -= moved == MAP_FAILED ? new_size : old_size; /* the system gives `room` up before it can fail */
    return moved == MAP_FAILED ? nullptr : moved;
}

/* Gives back the end of a mapping. Returns whether the system took it. */
inline bool shorten(void *start, size_t old_size, size_t new_size)
{
    if (munmap(static_cast<char *>(start) + new_size, old_size - new_size) != 0)
        return false;
    held -= old_size - new_size;
    return true;
}

inline bool extend(void *start, size_t old_size, size_t new_size)
{
    if (!well_aligned(start, new_size) || mremap(start, old_size, new_size, 0) == MAP_FAILED)
        return false;
    held += new_size - old_size;
    return true;
}

/* Gives a mapping another size, where it is or elsewhere; no byte is copied. Returns its place, or null: then it is
   as it was. */
inline void *remap(void *start, size_t old_size, size_t new_size)
{
    if (new_size < old_size ? shorten(start, old_size, new_size) : extend(start, old_size, new_size))
        return start;
    return move(start, old_size, new_size);
}

} // namespace mova::mappings

#endif
