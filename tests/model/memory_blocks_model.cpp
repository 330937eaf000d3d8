/* SPDX-License-Identifier: MIT */
/* Operations on a pool of movable blocks, whose budget, and the handles that it begins with, they choose too. After
   every operation the pool's invariants and figures, every live block's bytes and the handles that are dead are
   compared with a model made of strings; what moved is checked to have had to. */
#include "model.h"
#include "trace.h"

#include <tests/support/byte_source.h>
#include <tests/support/recording_host.h>
#include <mova/host/internal/invariants.h>

#include <mova/host/internal/block_pool.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace mova::test {

namespace {

constexpr std::size_t unit = gap_classes::unit;

struct model_block {
    std::string bytes;
    const char *address;
};

using model_blocks = std::map<mb_handle, model_block>;

class interpreter : public byte_interpreter {
public:
    explicit interpreter(byte_source bytes) : byte_interpreter(bytes), budget_(chosen_budget()), pool_(made_pool()) {}

private:
    using operation = void (interpreter::*)();

    void operate() override
    {
        static constexpr operation operations[] = {
            &interpreter::allocate_small,
            &interpreter::allocate_small,
            &interpreter::allocate_small,
            &interpreter::allocate_large,
            &interpreter::allocate_large,
            &interpreter::allocate_what_is_left,
            &interpreter::allocate_too_much,
            &interpreter::allocate_nothing,
            &interpreter::allocate_without_memory,
            &interpreter::release,
            &interpreter::release,
            &interpreter::release,
            &interpreter::release,
            &interpreter::write,
        };
        do_one_of(operations);
    }

    void finish() override
    {
        while (!blocks_.empty())
            release_at(blocks_.begin());
        compare();
        require(host_.take_complaints().empty(), "the host complained");
    }

    /* In the order of their handles. */
    bool describe(state_text &state, std::size_t most) const override
    {
        for (const auto &[handle, block] : blocks_)
            state.add((block.address - pool_.arena()) / static_cast<std::ptrdiff_t>(unit), block.bytes.size());
        return blocks_.size() <= most;
    }

    /* ---- what the operations choose ---- */

    std::size_t chosen_budget()
    {
        host_.reset();
        if (bytes_.is_exhaustive())
            return 5 * unit;
        return bytes_.next() * (std::size_t{1} << bytes_.below(9)) / 2 * unit;
    }

    block_pool made_pool()
    {
        const mb_handle last_handle = bytes_.below(2) ? ~mb_handle{0} - bytes_.next() : bytes_.next();
        return block_pool(take_memory(budget_ + unit), block_pool::empty_table(), budget_, last_handle);
    }

    std::size_t two_bytes(std::size_t weight)
    {
        const std::size_t first = bytes_.next();
        return first * weight + bytes_.next();
    }

    model_blocks::iterator any_block()
    {
        const std::size_t chosen =
            bytes_.is_exhaustive() ? bytes_.below(blocks_.size()) : two_bytes(256) % blocks_.size();
        return std::next(blocks_.begin(), static_cast<std::ptrdiff_t>(chosen));
    }

    /* ---- the model ---- */

    std::size_t room() const { return budget_ - live_bytes_; }

    std::size_t largest_gap() const
    {
        std::vector<std::pair<const char *, std::size_t>> places = {{pool_.arena() + budget_, 0}};
        for (const auto &[handle, block] : blocks_)
            places.emplace_back(block.address, block_pool::occupied_by(block.bytes.size()));
        std::ranges::sort(places);
        std::size_t largest = 0;
        const char *end = pool_.arena();
        for (const auto &[address, size] : places) {
            largest = std::max(largest, static_cast<std::size_t>(address - end));
            end = address + size;
        }
        return largest;
    }

    /* ---- operations ---- */

    void allocate(std::size_t size)
    {
        const std::size_t gap = largest_gap(), occupied = block_pool::occupied_by(size);
        const mb_statistics before = pool_.statistics();
        host_.take_log();
        const mb_handle handle = pool_.allocate(size);
        if (size > room()) {
            require(handle == 0, "a block was allocated without room");
            require(host_.take_log().empty(), "asked for memory without room for the block");
        } else if (handle == 0) {
            require(memory_fails_, "room was not found");
        } else {
            add(handle, size);
        }
        require(handle == 0 || occupied > gap || pool_.statistics().moves == before.moves, "moved, though a gap fits");
        require_moves(before);
    }

    void add(mb_handle handle, std::size_t size)
    {
        require(handle != 0 && handle != block_pool::none, "a handle that names nothing");
        require(!blocks_.contains(handle), "a live handle was handed out again");
        std::string bytes(size, static_cast<char>(bytes_.is_exhaustive() ? size : bytes_.next()));
        char *address = static_cast<char *>(pool_.get(handle));
        std::ranges::copy(bytes, address);
        blocks_[handle] = {bytes, address};
        live_bytes_ += block_pool::occupied_by(size);
        std::erase(dead_, handle);
    }

    /* The blocks that have another address now are those that were counted. */
    void require_moves(const mb_statistics &before)
    {
        std::size_t moves = 0, moved_bytes = 0;
        for (auto &[handle, block] : blocks_) {
            const char *address = static_cast<const char *>(pool_.get(handle));
            if (address != block.address) {
                ++moves;
                moved_bytes += block_pool::occupied_by(block.bytes.size());
            }
            block.address = address;
        }
        require(pool_.statistics().moves - before.moves == moves, "another number of moves");
        require(pool_.statistics().moved_bytes - before.moved_bytes == moved_bytes, "another number of bytes moved");
    }

    void allocate_small() { allocate(bytes_.is_exhaustive() ? unit * bytes_.below(4) : bytes_.next()); }
    void allocate_large() { allocate(bytes_.is_exhaustive() ? 4 * unit - 1 : two_bytes(64)); }
    void allocate_what_is_left() { allocate(room() - std::min(room(), bytes_.below(2 * unit, 2))); }
    void allocate_too_much() { allocate(room() + 1 + bytes_.below(2) * (SIZE_MAX - room() - 1)); }
    void allocate_nothing() { allocate(0); }

    void allocate_without_memory()
    {
        memory_fails_ = true;
        host_.fail_allocation(1);
        allocate(bytes_.next());
        host_.fail_allocation(0);
        memory_fails_ = false;
    }

    void release_at(model_blocks::iterator block)
    {
        const mb_statistics before = pool_.statistics();
        pool_.release(block->first);
        live_bytes_ -= block_pool::occupied_by(block->second.bytes.size());
        dead_.push_back(block->first);
        blocks_.erase(block);
        require_moves(before);
        require(pool_.statistics().moves == before.moves, "a release moved blocks");
    }

    void release()
    {
        if (!blocks_.empty())
            release_at(any_block());
    }

    void write()
    {
        if (blocks_.empty())
            return;
        auto &[handle, block] = *any_block();
        std::ranges::fill(block.bytes, static_cast<char>(bytes_.next()));
        std::ranges::copy(block.bytes, static_cast<char *>(pool_.get(handle)));
    }

    /* ---- comparison ---- */

    void compare() override
    {
        const int broken = broken_invariant(pool_);
        require(broken == 0, "invariant " + std::to_string(broken) + " is broken");
        require(pool_.statistics().budget == budget_, "another budget");
        require(pool_.statistics().live_blocks == blocks_.size(), "another number of blocks");
        require(pool_.statistics().live_bytes == live_bytes_, "other bytes are live");
        for (const auto &[handle, block] : blocks_)
            require(std::memcmp(pool_.get(handle), block.bytes.data(), block.bytes.size()) == 0, "other bytes");
        for (mb_handle handle : dead_)
            require(!pool_.get(handle), "a dead handle names a block");
        if (trace::current)
            show(*trace::current);
    }

    /* Where every block lies. */
    void show(trace &written) const
    {
        const mb_statistics figures = pool_.statistics();
        written.begin_call("blocks");
        written.result(figures.live_blocks);
        written.result(figures.live_bytes);
        written.result(figures.moves);
        written.result(figures.moved_bytes);
        for (const auto &[handle, block] : blocks_) {
            written.result(handle);
            written.result(block.address - pool_.arena());
        }
        written.end_call();
    }

    recording_host &host_ = recording_host::get();
    std::size_t budget_;
    block_pool pool_;
    model_blocks blocks_;
    std::vector<mb_handle> dead_;
    std::size_t live_bytes_ = 0;
    bool memory_fails_ = false;
};

[[maybe_unused]] const bool added = add_model<interpreter>("memory_blocks", {25, 1500}, {300, 40}, {2, 4});

} // namespace

} // namespace mova::test
