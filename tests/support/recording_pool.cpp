/* SPDX-License-Identifier: MIT */
#include "recording_host.h"

#include <algorithm>
#include <utility>

namespace mova::test {

namespace {

constexpr unsigned char fresh_byte = 0xCD;
constexpr unsigned char left_byte = 0xDD;

/* Handles use all their bits. */
constexpr mb_handle first_handle = 0xF0000000;

} // namespace

void recording_pool::reset()
{
    live_.clear();
    left_.clear();
    budget_ = SIZE_MAX;
    used_ = 0;
    last_ = first_handle;
    clears_handles_ = moves_all_ = true;
}

void recording_pool::move_only(int nth)
{
    moves_all_ = false;
    moves_offered_ = 0;
    only_move_ = nth;
}

std::string recording_pool::name_of(mb_handle handle) const
{
    if (!handle)
        return "0";
    return live_.contains(handle) ? "b" + std::to_string(handle - first_handle) : "?";
}

void recording_pool::check_pool(const mb_pool *pool)
{
    if (pool != address())
        complaints_.push_back("another pool");
}

std::span<unsigned char> recording_pool::bytes_of(mb_handle handle)
{
    bytes &place = live_.at(handle);
    return {place.data(), place.size() - 1};
}

void recording_pool::leave(bytes &&place)
{
    if (place.back() != fresh_byte)
        complaints_.push_back("written past the end of a block");
    std::ranges::fill(place, left_byte);
    left_.push_back(std::move(place));
}

void recording_pool::move_all()
{
    for (auto &[handle, place] : live_) {
        if (++moves_offered_ != only_move_ && !moves_all_)
            continue;
        bytes moved = place;
        std::swap(place, moved);
        leave(std::move(moved));
    }
}

mb_handle recording_pool::allocate(const mb_pool *pool, std::size_t size)
{
    const bool fails = fault_plan::get().strikes(fault_source::pool_allocation);
    check_pool(pool);
    move_all();
    mb_handle handle = 0;
    if (!fails && has_room_for(size)) {
        handle = ++last_;
        live_[handle] = bytes(size + 1, fresh_byte);
        used_ += size;
    }
    log_.push_back("mb_alloc " + std::to_string(size) + " = " + name_of(handle));
    return handle;
}

void *recording_pool::get(const mb_pool *pool, mb_handle handle)
{
    fault_plan::get().strikes(fault_source::pool_address);
    check_pool(pool);
    log_.push_back("mb_get " + name_of(handle));
    auto found = live_.find(handle);
    if (found == live_.end())
        complaints_.push_back("asked for a block that is not live");
    return found == live_.end() ? nullptr : found->second.data();
}

void recording_pool::release(const mb_pool *pool, mb_handle *handle)
{
    check_pool(pool);
    log_.push_back("mb_free " + name_of(*handle));
    auto found = live_.find(*handle);
    if (found == live_.end())
        return complaints_.push_back("freed a block that is not live");
    used_ -= bytes_of(*handle).size();
    leave(std::move(found->second));
    live_.erase(found);
    if (clears_handles_)
        *handle = 0;
}

void recording_pool::check_bytes()
{
    for (const auto &[handle, place] : live_) {
        if (place.back() != fresh_byte)
            complaints_.push_back("written past the end of a block");
    }
    for (const bytes &place : left_) {
        if (!std::ranges::all_of(place, [](unsigned char byte) { return byte == left_byte; }))
            complaints_.push_back("a place that a block had left was written");
    }
}

} // namespace mova::test

using mova::test::recording_host;

mb_handle mb_alloc(mb_pool *pool, size_t size)
{
    return recording_host::get().pool().allocate(pool, size);
}

void *mb_get(mb_pool *pool, mb_handle handle)
{
    return recording_host::get().pool().get(pool, handle);
}

void mb_free(mb_pool *pool, mb_handle *handle)
{
    recording_host::get().pool().release(pool, handle);
}
