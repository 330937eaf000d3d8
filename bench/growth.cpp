/* SPDX-License-Identifier: MIT */
#include "growth.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include <unistd.h>

#include <bench/child.h>
#include <bench/host/heaps.h>

namespace growth {
namespace {

/* So many operations are timed by processor time, which takes a call of the system to read; and the memory of so many items
   is told by pages. */
constexpr size_t many = 10000;
constexpr double second = 1e9;

struct family {
    const char *name;
    std::vector<contender> contenders;
};

std::vector<family> &families()
{
    static std::vector<family> all;
    return all;
}

double clock_time(clockid_t clock)
{
    timespec time = {};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * second + static_cast<double>(time.tv_nsec);
}

double processor_time()
{
    return clock_time(CLOCK_THREAD_CPUTIME_ID);
}

double median(std::vector<double> samples)
{
    const auto middle = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2);
    std::ranges::nth_element(samples, middle);
    return *middle;
}

/* What a look at the clock takes itself. */
double time_of_nothing()
{
    std::vector<double> times(1001);
    for (double &time : times) {
        const double start = clock_time(CLOCK_MONOTONIC);
        time = clock_time(CLOCK_MONOTONIC) - start;
    }
    return median(times);
}

struct sample {
    const char *operation;
    double figure;
};

/* The figures of a contender that lives for some hundredths of a second, or twice where that takes longer, or once where it takes
   very long. */
std::vector<sample> samples_of(const contender &of, size_t items)
{
    scoreboard::stay_on_this_processor();
    figures times;
    const double start = processor_time();
    double first_life = 0;
    double lived = 0;
    for (int lives = 0; lives < 2 || lived < second / 30; ++lives) {
        if (lives == 1) {
            first_life = lived;
            if (first_life > 3 * second)
                break;
            std::erase_if(times, [](const auto &each) { return each.first != "bytes"; });
        }
        life one(items, lives == 0, times);
        of.live(one);
        lived = processor_time() - start;
    }
    std::vector<sample> samples;
    for (const auto &[operation, all] : times)
        samples.push_back({operation.data(), median(all)});
    return samples;
}

/* The contenders take turns; where a turn is long there is one alone. */
bool run_size(const family &of, size_t items)
{
    constexpr int turns = 3;
    std::vector<figures> all(of.contenders.size());
    const double start = clock_time(CLOCK_MONOTONIC);
    for (int turn = 0; turn < turns && clock_time(CLOCK_MONOTONIC) - start < 5 * second; ++turn) {
        for (size_t i = 0; i < all.size(); ++i) {
            const contender &each = of.contenders[i];
            if (!each.live || static_cast<double>(items) > each.most)
                continue;
            const auto samples = scoreboard::in_a_child<sample>([&] { return samples_of(each, items); });
            if (!samples) {
                std::fprintf(stderr, "%s: %s failed with %zu items\n", of.name, each.name, items);
                return false;
            }
            for (const sample &one : *samples)
                all[i][one.operation].push_back(one.figure);
        }
    }
    for (size_t i = 0; i < all.size(); ++i) {
        for (const auto &[operation, figures_of] : all[i])
            std::printf("%s,%s,%s,%zu,%.3g\n", of.name, operation.data(), of.contenders[i].name, items,
                        median(figures_of));
    }
    std::fflush(stdout);
    return true;
}

bool is_number(const std::string &word)
{
    char *end = nullptr;
    return std::strtod(word.c_str(), &end) >= 10 && *end == 0;
}

bool is_family(const std::string &word)
{
    return std::ranges::any_of(families(), [&](const family &each) { return word == each.name; });
}

int refuse(const std::string &word)
{
    std::fprintf(stderr, "mova_bench --growth: no family \"%s\"; there are:", word.c_str());
    for (const family &each : families())
        std::fprintf(stderr, " %s", each.name);
    std::fprintf(stderr, "\n");
    return 1;
}

double most_of(const family &of)
{
    return std::ranges::max(of.contenders, {}, &contender::most).most;
}

} // namespace

double life::now(size_t operations)
{
    return clock_time(operations < many ? CLOCK_MONOTONIC : CLOCK_THREAD_CPUTIME_ID);
}

double life::resident() const
{
    return first_ && items_ >= many ? heaps::resident_bytes() : 0;
}

void life::note(const char *operation, double nanoseconds, size_t operations)
{
    static const double of_nothing = time_of_nothing();
    const double of_clock = operations < many ? of_nothing : 0;
    times_[operation].push_back(std::max(nanoseconds - of_clock, 0.0) / static_cast<double>(operations));
}

void life::note_bytes(double bytes)
{
    if (bytes > 0)
        times_["bytes"].push_back(bytes / static_cast<double>(items_));
}

bool add(const char *name, const std::vector<contender> &contenders)
{
    families().push_back({name, contenders});
    return true;
}

int run(const std::vector<std::string> &words)
{
    std::ranges::sort(families(), {}, [](const family &of) { return std::string_view(of.name); });
    std::vector<std::string> names;
    double most_items = HUGE_VAL;
    for (const std::string &word : words) {
        if (is_number(word))
            most_items = std::stod(word);
        else if (is_family(word))
            names.push_back(word);
        else
            return refuse(word);
    }
    bool good = true;
    for (const family &each : families()) {
        if (!names.empty() && !std::ranges::count(names, each.name))
            continue;
        const double most = std::min(most_of(each), most_items);
        for (int half_decades = 2; std::pow(10, half_decades / 2.0) <= most * 1.001; ++half_decades)
            good &= run_size(each, static_cast<size_t>(std::lround(std::pow(10, half_decades / 2.0))));
    }
    return good ? 0 : 1;
}

} // namespace growth
