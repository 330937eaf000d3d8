/* SPDX-License-Identifier: MIT */
#include "recording_host.h"
#include "plain_code.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>
#include <utility>

namespace mova::test {

namespace {

constexpr unsigned char fresh_byte = 0xCD;
constexpr unsigned char released_byte = 0xDD;

std::string number(int n)
{
    return "#" + std::to_string(n);
}

} // namespace

recording_host &recording_host::get()
{
    static const plain_code asked_for(std::getenv("MOVA_PLAIN_CODE") != nullptr);
    static recording_host host;
    return host;
}

void recording_host::reset()
{
    for (auto *blocks : {&live_, &released_}) {
        for (auto &[address, record] : *blocks)
            ::operator delete(const_cast<void *>(address));
        blocks->clear();
    }
    pool_.reset();
    log_.clear();
    complaints_.clear();
    last_number_ = 0;
    fault_plan::get().disarm();
    raise_mode_ = raise_mode::throws;
}

std::vector<std::string> recording_host::take_log()
{
    return std::exchange(log_, {});
}

std::vector<std::string> recording_host::take_complaints()
{
    check_released_blocks();
    pool_.check_bytes();
    return std::exchange(complaints_, {});
}

std::string recording_host::name_of(const void *block) const
{
    if (!block)
        return "null";
    for (const auto *blocks : {&live_, &released_}) {
        if (auto found = blocks->find(block); found != blocks->end())
            return number(found->second.number);
    }
    return "?";
}

recording_host::place recording_host::place_of(const void *address) const
{
    const auto *sought = static_cast<const char *>(address);
    for (const auto *blocks : {&live_, &released_}) {
        const auto after = blocks->upper_bound(address);
        if (after == blocks->begin())
            continue;
        const auto &[start, record] = *std::prev(after);
        const char *end = static_cast<const char *>(start) + record.size;
        if (sought < end || sought == start)
            return {record.number, static_cast<std::size_t>(end - sought), blocks == &live_};
    }
    return {};
}

bool recording_host::is_live(const void *block) const
{
    return live_.contains(block);
}

std::size_t recording_host::size_of(const void *block) const
{
    auto found = live_.find(block);
    return found == live_.end() ? static_cast<std::size_t>(-1) : found->second.size;
}

void *recording_host::create_block(std::size_t size)
{
    void *address = ::operator new(size);
    std::memset(address, fresh_byte, size);
    live_[address] = {size, ++last_number_};
    return address;
}

void *recording_host::allocate(std::size_t size)
{
    const bool fails = fault_plan::get().strikes(fault_source::allocation);
    void *address = fails ? nullptr : create_block(size);
    write_down("alloc " + std::to_string(size) + " = " + name_of(address));
    return address;
}

void recording_host::retire(void *address, std::size_t size)
{
    auto found = live_.find(address);
    if (found == live_.end())
        return complain("released a block that is not live: " + name_of(address));
    if (found->second.size != size)
        complain("released " + name_of(address) + " of " + std::to_string(found->second.size) + " bytes as " +
                 std::to_string(size));
    std::memset(address, released_byte, found->second.size);
    released_.insert(live_.extract(found));
}

void recording_host::release(void *block, std::size_t size)
{
    write_down("dealloc " + name_of(block) + " " + std::to_string(size));
    retire(block, size);
}

void *recording_host::reallocate(void *block, std::size_t old_size, std::size_t new_size)
{
    const bool fails = fault_plan::get().strikes(fault_source::allocation);
    std::string call = "realloc " + name_of(block) + " " + std::to_string(old_size) + " -> " + std::to_string(new_size);
    void *grown = nullptr;
    if (!fails) {
        grown = create_block(new_size);
        if (is_live(block))
            std::memcpy(grown, block, std::min({old_size, new_size, live_[block].size}));
        retire(block, old_size);
    }
    write_down(call + " = " + name_of(grown));
    return grown;
}

void recording_host::raise(const char *module, int32_t line, int32_t code)
{
    const bool returns = fault_plan::get().strikes(fault_source::raise);
    write_down("raise " + std::string(module) + " " + std::to_string(line) + " " + std::to_string(code));
    if (returns || raise_mode_ == raise_mode::returns)
        return;
    if (raise_mode_ == raise_mode::jumps)
        std::longjmp(fault_plan::get().target(), 1);
    throw raised{module, line, code};
}

void recording_host::check_released_blocks()
{
    for (const auto &[address, block] : released_) {
        const auto *bytes = static_cast<const unsigned char *>(address);
        if (!std::all_of(bytes, bytes + block.size, [](unsigned char byte) { return byte == released_byte; }))
            complain("a released block was written: " + number(block.number));
    }
}

} // namespace mova::test

using mova::test::fault_plan;
using mova::test::fault_source;
using mova::test::recording_host;

void *MM_alloc_item(size_t size)
{
    return recording_host::get().allocate(size);
}

void MM_dealloc_item(void *item, size_t size)
{
    recording_host::get().release(item, size);
}

void *MM_realloc_item(void *item, size_t old_size, size_t new_size)
{
    return recording_host::get().reallocate(item, old_size, new_size);
}

void mova_dprintf(const char *format, ...)
{
    fault_plan::get().strikes(fault_source::text);
    va_list arguments;
    va_start(arguments, format);
    char text[4096];
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    recording_host::get().write_down("dprintf " + std::string(text));
}

void debug_break(void)
{
    fault_plan::get().strikes(fault_source::text);
    recording_host::get().write_down("debug_break");
}

void MSG_Message(const char *text)
{
    fault_plan::get().strikes(fault_source::text);
    recording_host::get().write_down("message " + std::string(text));
}

void EX_raise_exception_line(const char *module, int32_t line, int32_t code)
{
    recording_host::get().raise(module, line, code);
}
