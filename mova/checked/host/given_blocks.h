/* SPDX-License-Identifier: MIT */
/* The blocks that the checked host gives. Small ones lie in slabs (mova/checked/internal/small_blocks.h); a larger one in a block of
   the ordinary service, whose first bytes are its record:

       | record size guard |  the program's bytes  | guard |

   What is declared here asks for the lock, but for what reads a single block. */
#ifndef MOVA_CHECKED_HOST_GIVEN_BLOCKS_H
#define MOVA_CHECKED_HOST_GIVEN_BLOCKS_H

#include <mova/checked/internal/small_blocks.h>

#include <cstring>
#include <mutex>

namespace mova::checked {

/* The service's own lock; it is taken only where there are threads. */
class lock {
public:
    lock() : locked_(!single_threaded())
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

/* In front of a large block. */
struct large_head {
    block_record record;
    size_t size;
};
constexpr size_t before_large = (sizeof(large_head) + sizeof guard_word + 15) & ~size_t{15};

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
    size_t size() const { return is_large() ? large()->size : room_of(bytes_) - slack(); }

    block_state state() const { return static_cast<block_state>(record_->noted.of_host >> 4 & 3); }

    /* Says how many bytes it has, and who asked for them; writes the guards. */
    void begin(size_t size, const void *made) const
    {
        record_->made = made;
        if (is_large()) {
            large()->size = size;
            set(block_state::live, 0);
            std::memcpy(bytes_ - sizeof guard_word, &guard_word, sizeof guard_word);
            std::memcpy(bytes_ + size, &guard_word, sizeof guard_word);
        } else {
            set(block_state::live, guard_behind(bytes_, size, room_of(bytes_)));
        }
    }

    /* The guards. Before a small block it is the one behind its neighbour. */
    const char *before() const { return bytes_ - sizeof guard_word; }
    const char *behind() const { return bytes_ + (is_large() ? size() : room_of(bytes_)); }
    bool is_whole_before() const { return is_large() ? is_guard(before()) : is_shared_guard(before()); }
    bool is_whole_behind() const
    {
        return is_large() ? is_guard(behind()) : is_whole_behind_small(bytes_, size(), room_of(bytes_));
    }

    /* Fills it with a pattern whose words are no address on 64-bit, to be kept. A small one is in the queue of its class then. */
    void keep(const void *released) const
    {
        set(block_state::kept, slack());
        if (record_->noted.last_place != released)
            record_->noted.last_place = released;
        if (is_large())
            std::memset(bytes_, pattern_of_the_released, size());
        else
            keep_small({bytes_, record_}, room_of(bytes_));
    }

    /* Of one that is kept. */
    const void *released() const { return record_->noted.last_place; }
    bool is_untouched() const
    {
        if (!is_large())
            return is_room_untouched(bytes_, room_of(bytes_));
        return static_cast<unsigned char>(*bytes_) == pattern_of_the_released &&
               std::memcmp(bytes_, bytes_ + 1, size() - 1) == 0;
    }

private:
    large_head *large() const { return reinterpret_cast<large_head *>(bytes_ - before_large); }
    unsigned slack() const { return record_->noted.of_host & 15; }

    void set(block_state state, size_t slack) const
    {
        record_->noted.of_host = static_cast<uint8_t>((record_->noted.of_host & large_mark) | host_byte(state, slack));
    }

    static bool is_guard(const char *at) { return std::memcmp(at, &guard_word, sizeof guard_word) == 0; }

    char *bytes_ = nullptr;
    block_record *record_ = nullptr;
};

/* Gets a new slab for the class with that pitch, whose newest one is used up. Returns whether the system had memory for it. */
bool begin_slab(size_class &of, size_t pitch);

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

/* Calls `visit(given)` for each in that state. */
void for_each_block(block_state state, void (*visit)(given, void *context), void *context);

/* How much address space the slabs have, and the table of the large blocks. */
size_t slab_bytes();
size_t large_table_bytes();

/* How many bytes of memory are spent on the block beside the program's. */
size_t bytes_around(given block);

} // namespace mova::checked

#endif
