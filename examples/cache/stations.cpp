/* SPDX-License-Identifier: MIT */
/* stations: keeps more bodies than memory has room for, in a store that is named on the command line. Changes them, with a
   confirmation after each batch; reads them at a rate of hits; or verifies each of them. */
#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <random>
#include <vector>

#include "options.h"
#include "station_cache.h"

namespace stations {

/* Prints a line now, for whoever waits for it. */
static void say(const std::string &line)
{
    if (std::printf("%s\n", line.c_str()) < 0 || std::fflush(stdout) != 0)
        throw std::runtime_error("standard output cannot be written to");
}

static std::string bodies(std::uint64_t count)
{
    return std::to_string(count) + (count == 1 ? " body" : " bodies");
}

/* ---- writing ---- */

/* `confirmed` counts the bodies that are safe in the store. */
static void write(const options &given, store &into, std::uint64_t &confirmed)
{
    station_cache cache(into, static_cast<std::size_t>(given.budget));
    const auto stations = static_cast<std::uint32_t>(given.stations);
    std::uint64_t written = 0;
    const std::uint64_t all = std::uint64_t{stations} * static_cast<std::uint64_t>(given.rounds);
    while (written < all) {
        const auto number = static_cast<std::uint32_t>(written % stations) + 1;
        if (number <= cache.size())
            cache.advance(number);
        else
            cache.add();
        if (++written % static_cast<std::uint64_t>(given.batch) == 0 || written == all) {
            cache.confirm();
            confirmed = written;
            say("confirmed " + std::to_string(confirmed) + " of " + bodies(all));
        }
    }
}

/* ---- reading ---- */

/* Reads bodies with a given rate of hits.

   The cache gives up first what was used last. Without help, each body that is fetched would take the place of one that is
   asked for often. So the body that was fetched before, which will not be asked for soon, is put in front:

       in memory   | hot | hot | hot | ... | hot | cold |        all but one of them are asked for again and again
                                                  '-> the next cold one, and so on */
class reader {
public:
    reader(station_cache &cache, std::int64_t budget)
        : cache_(cache), hot_(static_cast<std::uint32_t>(budget / static_cast<std::int64_t>(body_bytes)) - 1)
    {
        if (cache.size() < hot_ + 2)
            throw usage_error("at this --budget all " + std::to_string(cache.size()) +
                              " bodies lie in memory: give fewer bytes, or more --stations");
        for (std::uint32_t number = 1; number <= hot_; ++number)
            cache_.readings(number);
    }

    struct result {
        double seconds;
        std::uint64_t fetches;
    };

    result read(std::int64_t reads, std::int64_t hits)
    {
        const std::uint64_t fetches = cache_.fetches();
        const auto start = std::chrono::steady_clock::now();
        for (std::int64_t i = 0; i < reads; ++i) {
            if (static_cast<std::int64_t>(random_() % 100) < hits)
                use(static_cast<std::uint32_t>(random_() % hot_) + 1);
            else
                read_cold();
        }
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        return {elapsed.count(), cache_.fetches() - fetches};
    }

private:
    void use(std::uint32_t number)
    {
        const std::span<const reading> body = cache_.readings(number);
        const reading &some = body[random_() % readings_kept];
        if (some != measure(number, some.minute))
            throw damage_error("body " + std::to_string(number) + " has a reading that nobody measured");
    }

    void read_cold()
    {
        if (cold_ != 0)
            cache_.let_go_next(cold_);
        const std::uint32_t colds = cache_.size() - hot_;
        const auto step = cold_ == 0 ? 0 : 1 + static_cast<std::uint32_t>(random_() % (colds - 1));
        cold_ = hot_ + 1 + (cold_ == 0 ? 0 : (cold_ - hot_ - 1 + step) % colds);
        use(cold_);
    }

    station_cache &cache_;
    std::uint32_t hot_, cold_ = 0; /* the stations up to it; the last of the others that was read */
    std::minstd_rand random_;
};

static std::string whole(double number)
{
    return std::to_string(std::llround(number));
}

static void read(const options &given, store &from)
{
    if (given.reads == 0)
        return;
    station_cache cache(from, static_cast<std::size_t>(given.budget));
    reader reads(cache, given.budget);
    const auto count = static_cast<double>(given.reads);
    const reader::result result = reads.read(given.reads, given.hits);
    char share[32];
    std::snprintf(share, sizeof share, "%.1f", 100 * (1 - static_cast<double>(result.fetches) / count));
    say("read " + bodies(static_cast<std::uint64_t>(given.reads)) + ", " + share +
        " per cent of them in memory: " + whole(count / result.seconds) + " a second");
}

static void measure_reads(const options &given, store &from)
{
    station_cache cache(from, static_cast<std::size_t>(given.budget));
    reader reads(cache, given.budget);
    constexpr std::int64_t rates[] = {50, 90, 99};
    constexpr int runs = 5;
    std::vector<double> measured[std::size(rates)];
    for (int run = 0; run < runs; ++run)
        for (std::size_t i = 0; i < std::size(rates); ++i)
            measured[i].push_back(static_cast<double>(given.reads) / reads.read(given.reads, rates[i]).seconds);
    for (std::size_t i = 0; i < std::size(rates); ++i) {
        std::ranges::sort(measured[i]);
        say("hits " + std::to_string(rates[i]) + " per cent: " + whole(measured[i][runs / 2]) + " bodies a second (" +
            whole(measured[i].front()) + " to " + whole(measured[i].back()) + " in " + std::to_string(runs) + " runs)");
    }
}

/* ---- verifying ---- */

/* Compares every body with what its station measured, and with how many bodies a run has confirmed. */
static void verify(const options &given, store &from)
{
    station_cache cache(from, static_cast<std::size_t>(given.budget));
    const auto rounds = static_cast<std::int32_t>(given.confirmed / given.stations);
    const auto further = static_cast<std::uint32_t>(given.confirmed % given.stations);
    const auto least = rounds > 0 ? static_cast<std::uint32_t>(given.stations) : further;
    if (cache.size() < least)
        throw damage_error("has " + bodies(cache.size()) + ", and " + std::to_string(least) + " were confirmed");
    for (std::uint32_t number = 1; number <= cache.size(); ++number) {
        const std::span<const reading> body = cache.readings(number);
        std::int32_t minute = body.front().minute;
        if (number <= least && minute + 1 < rounds + (number <= further ? 1 : 0))
            throw damage_error("body " + std::to_string(number) + " is older than was confirmed");
        for (const reading &each : body)
            if (each != measure(number, minute++))
                throw damage_error("body " + std::to_string(number) + " is not what its station measured");
    }
    say("verified " + bodies(cache.size()));
}

/* ---- the program ---- */

/* Server and files speak in their own words: whatever these hold, it is one line. */
static int complain(const std::string &text)
{
    std::string line = "stations: " + text;
    std::ranges::replace_if(
        line, [](unsigned char c) { return c < ' ' || c == 0x7f; }, '?');
    std::fputs((line + "\n").c_str(), stderr);
    return 1;
}

static int run(int argc, char **argv)
{
    options given;
    std::uint64_t confirmed = 0;
    bool writes = false;
    try {
        given = parse_options(argc, argv);
        if (given.help) {
            std::fputs(usage().c_str(), stdout);
            return 0;
        }
        const bool may_create = !given.verify && given.rounds > 0;
        const std::unique_ptr<store> opened = open_store(given.url, {static_cast<int>(given.patience), may_create});
        writes = may_create;
        if (writes)
            write(given, *opened, confirmed);
        if (given.verify)
            verify(given, *opened);
        else if (given.measure)
            measure_reads(given, *opened);
        else
            read(given, *opened);
        return 0;
    } catch (const usage_error &error) {
        return complain(error.what());
    } catch (const store_error &error) {
        const std::string safe = "; what was confirmed is safe, " + bodies(confirmed) + " of this run";
        return complain(given.url + ": " + error.what() + (writes ? safe : ""));
    } catch (const std::exception &error) {
        return complain(given.url + ": " + error.what());
    }
}

} // namespace stations

int main(int argc, char **argv)
{
    std::signal(SIGPIPE, SIG_IGN); /* a server that has gone, and a file that may not grow, are errors like others */
    std::signal(SIGXFSZ, SIG_IGN);
    return stations::run(argc, argv);
}
