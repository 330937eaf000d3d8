/* SPDX-License-Identifier: MIT */
/* The memory blocks of the recording host. Every mb_alloc, whether it finds room or not, moves all other blocks, so that
   an address which is kept across one is found out; or, in a test that goes through the moves, one of them at one moment.

   Blocks are numbered in the order of their allocation (b1, b2, …). A fresh block is filled with 0xCD; what a block leaves
   behind, when it moves or is freed, is filled with 0xDD and kept aside until reset(), so that a write into it is found.
   A size is counted as it is against the budget. */
#ifndef MOVA_TESTS_SUPPORT_RECORDING_POOL_H
#define MOVA_TESTS_SUPPORT_RECORDING_POOL_H

#include <mova/frame/host.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace mova::test {

class recording_pool {
public:
    using texts = std::vector<std::string>;

    /* Writes calls and complaints where the host writes its own. */
    recording_pool(texts &log, texts &complaints) : log_(log), complaints_(complaints) {}

    /* Forgets all blocks. The budget is without limit, and handles are cleared, again. */
    void reset();

    /* What stands for a pool in the calls. The pool complains of every other. */
    mb_pool *address() { return reinterpret_cast<mb_pool *>(this); }

    void set_budget(std::size_t budget) { budget_ = budget; }

    /* Whether a release clears the caller's handle, as it does unless told otherwise. */
    void set_clears_handles(bool clears) { clears_handles_ = clears; }

    /* Of all moves that allocations offer from now on, makes the nth alone (1 is the next one), or none for 0. */
    void move_only(int nth);
    int moves_offered() const { return moves_offered_; }

    std::size_t live_blocks() const { return live_.size(); }
    bool has_room_for(std::size_t size) const { return size <= budget_ - used_; }

    /* "b1" for a live block, "0" for none, "?" otherwise. */
    std::string name_of(mb_handle handle) const;

    /* The bytes of a live block; writes nothing down. */
    std::span<unsigned char> bytes_of(mb_handle handle);

    /* The calls: "mb_alloc 100 = b1", "mb_alloc 100 = 0", "mb_get b1", "mb_free b1". */
    mb_handle allocate(const mb_pool *pool, std::size_t size);
    void *get(const mb_pool *pool, mb_handle handle);
    void release(const mb_pool *pool, mb_handle *handle);

    void check_bytes();

private:
    using bytes = std::vector<unsigned char>; /* a block's, and one for a guard */

    void move_all();
    void leave(bytes &&place);
    void check_pool(const mb_pool *pool);

    texts &log_;
    texts &complaints_;
    std::map<mb_handle, bytes> live_;
    std::vector<bytes> left_;
    std::size_t budget_ = SIZE_MAX, used_ = 0;
    mb_handle last_ = 0;
    bool clears_handles_ = true, moves_all_ = true;
    int moves_offered_ = 0, only_move_ = 0;
};

} // namespace mova::test

#endif
