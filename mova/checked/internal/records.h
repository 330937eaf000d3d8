/* SPDX-License-Identifier: MIT */
/* What is noted of an address, and where that stands.

   The checked host keeps blocks of up to 1016 bytes in slabs of 64 KiB, each with blocks of one size: so the record of a
   block is found by reckoning.

       slab 0x…30000:  | slab | record record record … | guard | block guard | block guard | …

   A table tells which pieces of 64 KiB are slabs. Slabs stay, and a record lasts until its block is used again. Larger
   blocks have their records in front of them. The notes of all other addresses are in a table of the containers' checks. */
#ifndef MOVA_CHECKED_INTERNAL_RECORDS_H
#define MOVA_CHECKED_INTERNAL_RECORDS_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace mova::checked {

/* A place in the program: the address that a call returns to. */
using place = const void *;

/* What lies at an address: a container's head; a block that a container allocated, which is a node of it or its storage;
   an iterator that it allocated; or a record of the program's that is linked into a container. */
enum class kind : uint8_t { head, block, iterator, item };

using owner_number = uint32_t;

struct entry {
    place last_place;   /* where it was made, or where it was removed or released */
    owner_number owner; /* 0 where nothing is known */
    kind what;
    bool live;
    bool known;      /* false where nothing is known of the address */
    uint8_t of_host; /* the checked host's own */
};

/* The last four bytes of an entry as one word, to be compared and stored at once. */
constexpr uint32_t state_word(kind what, bool live, bool known, uint8_t of_host)
{
    return std::bit_cast<uint32_t>(std::array<uint8_t, 4>{static_cast<uint8_t>(what), live, known, of_host});
}

/* Those of its bytes that are not the host's. */
constexpr auto containers_bytes = std::bit_cast<uint32_t>(std::array<uint8_t, 4>{255, 255, 255, 0});

constexpr size_t state_offset = offsetof(entry, what);

inline uint32_t state_word(const entry &of)
{
    uint32_t word;
    std::memcpy(&word, reinterpret_cast<const char *>(&of) + state_offset, sizeof word);
    return word;
}

inline void set_state_word(entry &of, uint32_t word)
{
    std::memcpy(reinterpret_cast<char *>(&of) + state_offset, &word, sizeof word);
}

/* A block of the checked host. The containers' checks write the entry but for its last byte, and the host all else, each
   under its own lock; either writes where a block was released. Where there is one thread, the containers' checks write all. */
struct block_record {
    entry noted;
    const void *made;   /* where */
    block_record *next; /* of its size, that was released after it */
};

struct slab {
    slab *next;
    uint32_t first;      /* how far from the slab's beginning the first block is */
    uint32_t pitch;      /* from one block to the next */
    uint32_t reciprocal; /* 2^32 divided by the pitch, rounded up */
    uint32_t count;

    block_record *records() { return reinterpret_cast<block_record *>(this + 1); }
    char *block(size_t index) { return reinterpret_cast<char *>(this) + first + index * pitch; }
};

constexpr size_t slab_size = 65536;

/* For each 4 GiB of addresses in which there is a slab, a byte for each 64 KiB of them: 1 where that is one. */
struct slab_table {
    static constexpr size_t pieces = sizeof(void *) == 8 ? 65536 : 1;

    const uint8_t *marks[pieces];
};

inline bool is_in_slab(const slab_table &table, uintptr_t address)
{
    const uint64_t piece = uint64_t{address} >> 32;
    if (piece >= slab_table::pieces)
        return false;
    const uint8_t *const marks = __atomic_load_n(&table.marks[piece], __ATOMIC_ACQUIRE);
    return marks && __atomic_load_n(&marks[address / slab_size % 65536], __ATOMIC_ACQUIRE);
}

inline slab &slab_around(uintptr_t address)
{
    return *reinterpret_cast<slab *>(address & ~uintptr_t{slab_size - 1});
}

/* The bytes of a small block. */
inline char *block_of(block_record *record)
{
    slab &in = slab_around(reinterpret_cast<uintptr_t>(record));
    return in.block(static_cast<size_t>(record - in.records()));
}

/* The record of the block that begins there, or null where none does. Exact for all distances in a slab. */
inline block_record *record_in(slab &in, uintptr_t address)
{
    const auto distance = static_cast<uint32_t>(address % slab_size) - in.first;
    const auto index = static_cast<uint32_t>((uint64_t{distance} * in.reciprocal) >> 32);
    return index < in.count && index * in.pitch == distance ? &in.records()[index] : nullptr;
}

inline block_record *record_of(const slab_table &table, uintptr_t address)
{
    return is_in_slab(table, address) ? record_in(slab_around(address), address) : nullptr;
}

} // namespace mova::checked

#endif
