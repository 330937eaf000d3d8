/* SPDX-License-Identifier: MIT */
/* The blocks that the checked host gives. Small ones lie in slabs (mova/checked/internal/records.h); a larger one in a block of
   the ordinary service, whose first bytes are its record:

       | record size guard |  the program's bytes  | guard |

   What is declared here asks for the lock, but for what reads a single block. */
#ifndef MOVA_CHECKED_HOST_GIVEN_BLOCKS_H
#define MOVA_CHECKED_HOST_GIVEN_BLOCKS_H

#include <mova/checked/internal/blocks.h>

#include <cstring>
#include <mutex>

namespace mova::checked {

/* The service's own lock; it is taken only where there are threads. */
class lock {
public:
    lock() : locked_(!has_one_thread())
    {
        if (locked_)
            mutex.lock();
    }
    ~lock()
    {
        if (locked_)
            mutex.unlock();
    }
    lock(const lock &) = delete;
    lock &operator=(const lock &) = delete;

    static std::mutex mutex;

private:
    bool locked_;
};

enum class block_state : uint8_t {
    unused, /* it never was a block */
    live,
    kept, /* it was released, and its bytes are watched */
    gone, /* it serves the next one of its size */
};

constexpr uint64_t guard_word = 0xA5C3A5C3A5C3A5C3u;
constexpr char slack_byte = 0x5A;
constexpr uint64_t pattern_word = 0xDFDFDFDFDFDFDFDFu;

/* In front of a large block. */
struct large_head {
    block_record record;
    size_t size;
};
constexpr size_t before_large = (sizeof(large_head) + sizeof guard_word + 15) & ~size_t{15};

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

/* A block, which may have been released; null where there is none. */
class given {
public:
    /* In the host's byte of a large block's record. The bits below are the state and the slack. */
    static constexpr uint8_t large_mark = 0x40;

    constexpr given() = default;
    constexpr given(char *bytes, block_record *record) : bytes_(bytes), record_(record) {}

    explicit operator bool() const { return record_; }

    char *bytes() const { return bytes_; }
    block_record *record() const { return record_; }
    bool is_large() const { return record_->noted.of_host & large_mark; }

    /* What the program asked for. */
    size_t size() const { return is_large() ? large()->size : room() - slack(); }

    /* Of a small block, with its guard. */
    size_t pitch() const { return room() + sizeof guard_word; }

    block_state state() const { return static_cast<block_state>(record_->noted.of_host >> 4 & 3); }
    void set_state(block_state state) const { set(state, slack()); }

    /* Whether a small block lives, has that size, and its guards are whole. */
    __attribute__((always_inline)) bool is_plainly(size_t size) const
    {
        const size_t room = this->room();
        return record_->noted.of_host == (static_cast<unsigned>(block_state::live) << 4 | (room - size)) &&
               room - size < 16 && is_shared_guard(before()) && is_shared_guard(bytes_ + room) &&
               (room == size || is_whole_behind());
    }

    /* Says how many bytes it has, and who asked for them; writes the guards of a large block. */
    void begin(size_t size, const void *made) const
    {
        record_->made = made;
        if (is_large()) {
            large()->size = size;
            set(block_state::live, 0);
            std::memcpy(bytes_ - sizeof guard_word, &guard_word, sizeof guard_word);
            std::memcpy(bytes_ + size, &guard_word, sizeof guard_word);
        } else {
            const size_t slack = room() - size;
            set(block_state::live, static_cast<unsigned>(slack));
            for (size_t i = 0; i < slack; ++i)
                bytes_[size + i] = slack_byte;
        }
    }

    /* The guards. Before a small block it is the one behind its neighbour. */
    const char *before() const { return bytes_ - sizeof guard_word; }
    const char *behind() const { return bytes_ + (is_large() ? size() : room()); }
    bool is_whole_before() const { return is_large() ? is_guard(before()) : is_shared_guard(before()); }

    bool is_whole_behind() const
    {
        if (is_large())
            return is_guard(behind());
        for (const char *at = behind() - slack(); at != behind(); ++at) {
            if (*at != slack_byte)
                return false;
        }
        return is_shared_guard(behind());
    }

    /* Fills it with a pattern whose words are no address on 64-bit. */
    void fill() const
    {
        const size_t filled = is_large() ? size() : room();
        if (is_large() || filled > 128)
            std::memset(bytes_, pattern_of_the_released, filled);
        else
            fill_words(bytes_, bytes_ + filled);
    }

    bool is_untouched() const
    {
        if (is_large()) {
            const size_t own = size();
            return static_cast<unsigned char>(*bytes_) == pattern_of_the_released &&
                   std::memcmp(bytes_, bytes_ + 1, own - 1) == 0;
        }
        uint64_t differs = 0;
        for (const char *at = bytes_, *const end = at + room(); at != end; at += sizeof pattern_word) {
            uint64_t word;
            std::memcpy(&word, at, sizeof word);
            differs |= word ^ pattern_word;
        }
        return differs == 0;
    }

private:
    large_head *large() const { return reinterpret_cast<large_head *>(bytes_ - before_large); }

    /* Between a small block's beginning and its guard, in whole words: what the program asked for, and the slack. */
    size_t room() const { return slab_around(reinterpret_cast<uintptr_t>(bytes_)).pitch - sizeof guard_word; }
    unsigned slack() const { return record_->noted.of_host & 15; }

    void set(block_state state, unsigned slack) const
    {
        record_->noted.of_host =
            static_cast<uint8_t>((record_->noted.of_host & large_mark) | static_cast<unsigned>(state) << 4 | slack);
    }

    /* A loop, of which the compiler makes no call: most blocks are of few words. */
    static void fill_words(char *at, const char *end)
    {
        for (; at < end; at += sizeof pattern_word) {
            std::memcpy(at, &pattern_word, sizeof pattern_word);
            __asm__("" : "+r"(at));
        }
    }

    static bool is_guard(const char *at) { return std::memcmp(at, &guard_word, sizeof guard_word) == 0; }

    char *bytes_ = nullptr;
    block_record *record_ = nullptr;
};

/* ---- small blocks ---- */

constexpr size_t granule = 16;
constexpr size_t largest_pitch = 1024;
constexpr size_t largest_small = largest_pitch - sizeof guard_word;

/* The blocks of one pitch. */
struct size_class {
    slab *newest;
    uint32_t used, most; /* of the newest slab's blocks: those that ever were in use, and all of them */
    char *free;          /* a list of those that were given back */
};

extern size_class classes[largest_pitch / granule + 1];

/* Gets a new slab for that class, whose newest one is used up. Returns whether the system had memory for it. */
bool begin_slab(size_class &of, uint32_t pitch);

/* The record of a block is known to be there. */
inline given small_block(char *bytes)
{
    const auto address = reinterpret_cast<uintptr_t>(bytes);
    return {bytes, record_in(slab_around(address), address)};
}

/* A block of that size with a guard behind it, or null where the system has no memory. */
inline given take_small(size_t size)
{
    const size_t pitch = (size + sizeof guard_word + granule - 1) & ~(granule - 1);
    size_class &from = classes[pitch / granule];
    given taken;
    if (from.free) {
        taken = small_block(from.free);
        from.free = static_cast<char *>(const_cast<void *>(taken.record()->made));
    } else {
        if (from.used == from.most && !begin_slab(from, static_cast<uint32_t>(pitch)))
            return {};
        const uint32_t index = from.used++;
        taken = {from.newest->block(index), &from.newest->records()[index]};
    }
    write_shared_guard(taken.bytes() + pitch - sizeof guard_word);
    return taken;
}

/* Gives its memory to other blocks. */
inline void give_back_small(given block)
{
    size_class &to = classes[block.pitch() / granule];
    block.set_state(block_state::gone);
    block.record()->made = to.free;
    to.free = block.bytes();
}

/* ---- all blocks ---- */

/* The block that begins there; null where none ever did. Takes the lock itself, where it is no small one. */
given find_elsewhere(const void *bytes);

inline given find_block(const void *bytes)
{
    const auto address = reinterpret_cast<uintptr_t>(bytes);
    if (!is_in_slab(mova_checked_slabs, address))
        return find_elsewhere(bytes);
    block_record *const record = record_in(slab_around(address), address);
    return record ? given(static_cast<char *>(const_cast<void *>(bytes)), record) : given();
}

/* A large block, which has begun; null where the system has no memory, which is reported by then. Takes the lock itself. */
given take_large(size_t size, const void *made);

/* Gives it back to the ordinary service. Takes the lock itself. */
void give_back_large(given block);

/* Calls `visit(given)` for each that lives. */
void for_each_live_block(void (*visit)(given, void *context), void *context);

/* How much address space the slabs have, and the table of the large blocks. */
size_t slab_bytes();
size_t large_table_bytes();

/* How many bytes of memory are spent on the block beside the program's. */
size_t bytes_around(given block);

} // namespace mova::checked

#endif
