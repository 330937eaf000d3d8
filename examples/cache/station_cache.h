/* SPDX-License-Identifier: MIT */
/* The latest readings of many stations, more than fit into memory: bodies of a swap cache, which live in a store.

       store    | catalogue | station 1 | station 2 | station 3 | ...          all of them, as of the last confirm()
                                  ^           |
        eviction of a changed body|           | fetch
                                  |           v
       pool     | station 7 | station 1 | station 2 |                          some of them, within a budget

   A body is the last 1,024 readings of its station. A new reading pushes the oldest out: each body is made of the one before,
   so that one lost change would show in all bodies to come. */
#ifndef STATIONS_STATION_CACHE_H
#define STATIONS_STATION_CACHE_H

#include <deque>

#include <mova/cxx/block_pool.h>
#include <mova/cxx/swap_cache.h>

#include "record.h"

namespace stations {

struct reading {
    static constexpr std::uint32_t kind = 0x72646e67;
    std::int32_t minute, millidegrees;

    bool operator==(const reading &) const = default;
};

constexpr std::size_t readings_kept = 1024;
constexpr std::size_t body_bytes = readings_kept * sizeof(reading);

/* What the station measures in that minute. A real one would be asked. */
reading measure(std::uint32_t number, std::int32_t minute);

class station_cache {
public:
    /* Reads from the store how many stations there are. Requires a budget for two bodies. */
    station_cache(store &bodies, std::size_t budget);
    station_cache(const station_cache &) = delete;

    /* Stations are numbered from 1 to this. */
    std::uint32_t size() const { return static_cast<std::uint32_t>(stations_.size()); }
    std::uint64_t fetches() const { return fetches_; }

    /* All of these throw as the store does. After that, only the destructor may be called. */

    /* The station's body, until the next call. */
    std::span<const reading> readings(std::uint32_t number) { return cache_.body(at(number).entry); }
    /* Says that the body will not be asked for soon: it makes room for the next that is fetched. */
    void let_go_next(std::uint32_t number) { cache_.let_go_next(at(number).entry); }
    /* Adds a station, which begins to measure in minute 0. Returns its number. */
    std::uint32_t add();
    /* Adds the station's next reading. */
    void advance(std::uint32_t number);
    /* Has the store make all changes last. */
    void confirm();

private:
    struct station {
        station_cache *owner;
        std::uint32_t number;
        mova::swap_cache<station, reading>::position entry;

        /* What the cache asks for. */
        std::size_t body_size() const { return readings_kept; }
        void fill(std::span<reading> body);
        void write_back(std::span<reading> body);
    };
    using position = mova::swap_cache<station, reading>::position;

    station &at(std::uint32_t number) { return stations_[number - 1]; }
    /* Returns the entry of a changed body, which `write` makes. */
    template <class Write>
    position insert(station &changed, Write write);

    store &store_;
    mova::block_pool pool_;
    std::deque<station> stations_; /* whose addresses the cache keeps */
    mova::swap_cache<station, reading> cache_;
    std::uint64_t fetches_ = 0;
};

} // namespace stations

#endif
