/* SPDX-License-Identifier: MIT */
/* A host for tests: supplies every service, writes down every call with its arguments, and checks what it is given.

   Blocks are numbered in the order of their allocation (#1, #2, …), so that a log reads alike in every run. A fresh
   block is filled with 0xCD; a released one is filled with 0xDD and kept aside until reset(), so that a record which a
   caller goes on looking at stays readable, and a write into it is found. Every service but those that take back asks the
   fault plan first whether it is to fail. */
#ifndef MOVA_TESTS_SUPPORT_RECORDING_HOST_H
#define MOVA_TESTS_SUPPORT_RECORDING_HOST_H

#include <mova/frame/host.h>

#include <tests/support/fault_plan.h>
#include <tests/support/recording_pool.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace mova::test {

/* What EX_raise_exception_line throws in the throwing mode. */
struct raised {
    std::string module;
    int32_t line;
    int32_t code;
};

/* What a raise does. A jump goes where the fault plan's jumps go. */
enum class raise_mode { throws, returns, jumps };

class recording_host {
public:
    using raise_mode = mova::test::raise_mode;

    /* The one host of the process. */
    static recording_host &get();

    /* Forgets everything and frees all blocks. Raises throw again. */
    void reset();

    /* The calls since the last take, one line each: "alloc 24 = #1", "dealloc #1 24", "realloc #1 24 -> 48 = #2",
       "raise egenlist 989 4297", "dprintf …", "message …", "debug_break". */
    std::vector<std::string> take_log();

    /* What the host found wrong: a size that differs from the block's, an unknown or dead block, a write into a released
       block. */
    std::vector<std::string> take_complaints();

    std::size_t live_blocks() const { return live_.size(); }

    /* The memory blocks, which are written down in the same log. */
    recording_pool &pool() { return pool_; }

    /* The same without taking them. */
    const std::vector<std::string> &log() const { return log_; }

    /* The block that an address lies in, live or released. (Released ones are kept: no address is ever of two.) */
    struct place {
        int number;             /* 0 for none */
        std::size_t bytes_left; /* to the block's end */
        bool is_live;
    };
    place place_of(const void *address) const;

    /* "#n" for a block, live or released; "null" or "?" otherwise. */
    std::string name_of(const void *block) const;
    bool is_live(const void *block) const;

    /* The bytes of a live block; -1 for anything else. */
    std::size_t size_of(const void *block) const;

    /* Makes the n-th allocation or reallocation from now (1 is the next one) return null. */
    void fail_allocation(int n) { fault_plan::get().arm(fault_source::allocation, fault_way::answers, n); }

    void set_raise_mode(raise_mode mode) { raise_mode_ = mode; }

    void *allocate(std::size_t size);
    void release(void *block, std::size_t size);
    void *reallocate(void *block, std::size_t old_size, std::size_t new_size);
    void raise(const char *module, int32_t line, int32_t code);
    void write_down(std::string call) { log_.push_back(std::move(call)); }

    ~recording_host() { reset(); }

private:
    struct block_record {
        std::size_t size;
        int number;
    };

    void *create_block(std::size_t size);
    void retire(void *address, std::size_t size);
    void check_released_blocks();
    void complain(std::string text) { complaints_.push_back(std::move(text)); }

    std::vector<std::string> log_;
    std::vector<std::string> complaints_;
    recording_pool pool_{log_, complaints_};
    std::map<const void *, block_record> live_;
    std::map<const void *, block_record> released_;
    int last_number_ = 0;
    raise_mode raise_mode_ = raise_mode::throws;
};

} // namespace mova::test

#endif
