/* SPDX-License-Identifier: MIT */
#include "station_cache.h"

#include <algorithm>

namespace stations {

/* The record before the stations'. */
constexpr std::uint32_t catalogue_number = 0;

struct catalogue {
    static constexpr std::uint32_t kind = 0x63746c67;
    std::uint32_t stations;
};

reading measure(std::uint32_t number, std::int32_t minute)
{
    const std::uint32_t mixed = (number * 2654435761u + static_cast<std::uint32_t>(minute)) * 2246822519u;
    return {minute, static_cast<std::int32_t>((mixed >> 8) % 60000) - 20000};
}

void station_cache::station::fill(std::span<reading> body)
{
    take_body(owner->store_.get(number), number, body);
    ++owner->fetches_;
}

void station_cache::station::write_back(std::span<reading> body)
{
    put_body<reading>(owner->store_, number, body);
}

station_cache::station_cache(store &bodies, std::size_t budget) : store_(bodies), pool_(budget), cache_(pool_.get())
{
    catalogue known = {0};
    if (const std::span<const std::byte> record = store_.get(catalogue_number); !record.empty())
        take_body(record, catalogue_number, std::span(&known, 1));
    for (std::uint32_t number = 1; number <= known.stations; ++number) {
        stations_.push_back({this, number, {}});
        stations_.back().entry = cache_.insert(stations_.back());
    }
}

/* Nothing makes a fetched body dirty. So a change is a new body, in a block of its own, that takes the old one's place:

   1. Allocate the block. That may evict any body, the station's own too.
   2. Write into it. To fetch the body before may move the block: its address is asked for after that.
   3. Insert it. It is the only copy now, and is written back before it goes.
   4. Remove the entry before. Its body is out of date, whether it was written back or not. */
template <class Write>
station_cache::position station_cache::insert(station &changed, Write write)
{
    mb_handle block = cache_.alloc(readings_kept);
    try {
        write(block);
        return cache_.insert(changed, block);
    } catch (...) {
        cache_.free(block);
        throw;
    }
}

std::uint32_t station_cache::add()
{
    station &added = stations_.emplace_back(station{this, size() + 1, {}});
    added.entry = insert(added, [&](mb_handle block) {
        reading *const body = cache_.at(block);
        for (std::size_t i = 0; i < readings_kept; ++i)
            body[i] = measure(added.number, static_cast<std::int32_t>(i));
    });
    return added.number;
}

void station_cache::advance(std::uint32_t number)
{
    station &changed = at(number);
    const position after = insert(changed, [&](mb_handle block) {
        const std::span<const reading> before = cache_.body(changed.entry);
        reading *const body = cache_.at(block);
        std::ranges::copy(before.subspan(1), body);
        body[readings_kept - 1] = measure(number, before.back().minute + 1);
    });
    cache_.remove(std::exchange(changed.entry, after));
}

/* The catalogue is put last: it never names a station that the store does not have. */
void station_cache::confirm()
{
    cache_.flush();
    const catalogue known = {size()};
    put_body(store_, catalogue_number, std::span(&known, 1));
    store_.commit();
}

} // namespace stations
