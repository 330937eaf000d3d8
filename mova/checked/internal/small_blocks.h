/* SPDX-License-Identifier: MIT */
/* The small blocks of the checked host, and how they come and go.

   The blocks of one size stand in a queue once they were released, filled with a pattern, and when enough are in it the one in
   front serves again. It must still hold the pattern.

       oldest ->  | DF DF DF | -> | DF DF DF | -> ... -> | DF DF DF |   <- the next that is released

   Both libraries know this: where there is one thread, the containers' checks take and release the blocks of their containers
   without a call of the host's, but where something is wrong. What is declared here asks for the host's lock. */
#ifndef MOVA_CHECKED_INTERNAL_SMALL_BLOCKS_H
#define MOVA_CHECKED_INTERNAL_SMALL_BLOCKS_H

#include "blocks.h"

namespace mova::checked {

enum class block_state : uint8_t {
    unused, /* it never was a block */
    live,
    kept, /* it was released, and its bytes are watched */
};

/* The host's byte in a record: the state, and how many bytes of a small block the program has not asked for. */
constexpr uint8_t host_byte(block_state state, size_t slack)
{
    return static_cast<uint8_t>(static_cast<unsigned>(state) << 4 | slack);
}

constexpr uint64_t guard_word = 0xA5C3A5C3A5C3A5C3u;
constexpr char slack_byte = 0x5A;
constexpr uint64_t pattern_word = 0xDFDFDFDFDFDFDFDFu;

constexpr size_t granule = 16;
constexpr size_t largest_pitch = 1024;
constexpr size_t largest_small = largest_pitch - sizeof guard_word;

/* From one block to the next. */
constexpr size_t pitch_for(size_t size)
{
    return (size + sizeof guard_word + granule - 1) & ~(granule - 1);
}

/* Between a small block's beginning and its guard: what the program asked for, and the slack. */
inline size_t room_of(const char *bytes)
{
    return slab_around(reinterpret_cast<uintptr_t>(bytes)).pitch - sizeof guard_word;
}

/* A guard that two blocks look at, of two threads perhaps. Words of it are written before the first of them lives, and once
   more before its memory serves again. */
using shared_word = uintptr_t;
constexpr auto shared_guard_word = static_cast<shared_word>(guard_word);

inline void write_shared_guard(char *at)
{
    for (size_t i = 0; i < sizeof guard_word; i += sizeof(shared_word))
        __atomic_store_n(reinterpret_cast<shared_word *>(at + i), shared_guard_word, __ATOMIC_RELAXED);
}

inline bool is_shared_guard(const char *at)
{
    shared_word differs = 0;
    for (size_t i = 0; i < sizeof guard_word; i += sizeof(shared_word))
        differs |= __atomic_load_n(reinterpret_cast<const shared_word *>(at + i), __ATOMIC_RELAXED) ^ shared_guard_word;
    return differs == 0;
}

/* ---- the pattern ---- */

/* The room of a block is a word, and pairs of words. Most have few: a loop, of which the compiler makes no call. */
inline void fill_room(char *bytes, size_t room)
{
    if (room > 128) {
        std::memset(bytes, pattern_of_the_released, room);
        return;
    }
    const uint64_t pair[] = {pattern_word, pattern_word};
    std::memcpy(bytes, pair, sizeof pattern_word);
    for (char *at = bytes + sizeof pattern_word, *const end = bytes + room; at != end; at += sizeof pair) {
        std::memcpy(at, pair, sizeof pair);
        __asm__("" : "+r"(at));
    }
}

inline bool is_room_untouched(const char *bytes, size_t room)
{
    const auto difference = [](const char *at) {
        uint64_t word;
        std::memcpy(&word, at, sizeof word);
        return word ^ pattern_word;
    };
    uint64_t differs = difference(bytes);
    for (const char *at = bytes + sizeof pattern_word, *const end = bytes + room; at != end; at += granule)
        differs |= difference(at) | difference(at + sizeof pattern_word);
    return differs == 0;
}

/* ---- taking and releasing ---- */

struct small_block {
    char *bytes; /* null where there is none */
    block_record *record;
};

/* The class whose blocks serve that size. */
inline size_class &class_for(size_t size)
{
    return mova_checked_classes[pitch_for(size) / granule];
}

/* Whether there is a next block; else a slab must begin. */
inline bool is_ready(const size_class &from)
{
    return from.kept > from.most_kept || from.used != from.most;
}

/* Takes the next one out, which was released or never was a block. */
inline small_block take_next(size_class &from)
{
    if (from.kept > from.most_kept) {
        block_record *const oldest = from.oldest;
        from.oldest = oldest->next;
        --from.kept;
        /* The next one may have lain there for long. */
        __builtin_prefetch(from.oldest, 1);
        __builtin_prefetch(block_of(from.oldest), 1);
        return {block_of(oldest), oldest};
    }
    const uint32_t index = from.used++;
    return {from.newest->block(index), &from.newest->records()[index]};
}

/* Writes the guard behind the block, and into what the program did not ask for. Returns how much that is. */
inline size_t guard_behind(char *bytes, size_t size, size_t room)
{
    write_shared_guard(bytes + room);
    for (size_t i = size; i < room; ++i)
        bytes[i] = slack_byte;
    return room - size;
}

/* Whether nobody has written behind what the program asked for. */
inline bool is_whole_behind_small(const char *bytes, size_t size, size_t room)
{
    for (size_t i = size; i < room; ++i) {
        if (bytes[i] != slack_byte)
            return false;
    }
    return is_shared_guard(bytes + room);
}

/* Fills it, and lets it stand in the queue. Its state is the caller's matter. */
inline void keep_small(small_block block, size_t room)
{
    fill_room(block.bytes, room);
    size_class &of = mova_checked_classes[(room + sizeof guard_word) / granule];
    *of.end = block.record;
    of.end = &block.record->next;
    ++of.kept;
}

} // namespace mova::checked

#endif
