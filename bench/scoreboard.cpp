/* SPDX-License-Identifier: MIT */
#include "scoreboard.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <variant>

#include <bench/child.h>
#include <bench/growth.h>

namespace scoreboard {
namespace {

using row = std::variant<timed_row, measured_row>;

/* The median of some samples, and half the distance between their quartiles as a part of it. */
struct figure {
    double median = std::nan(""), spread = 0;
};
using figures = std::vector<figure>; /* ours, then the peers'; not a number where a peer is not to be had */

/* How much time a row is given, and which rows are left out as too long. After `once` the figures mean nothing: it shows
   that the rows run. */
struct effort {
    int repetitions;
    const char *seconds;
    int measured_repetitions; /* of rows that measure themselves */
    double most_operations;
};
constexpr effort full = {11, "0.1", 5, HUGE_VAL}, quick = {3, "0.01", 3, HUGE_VAL}, once = {1, "0", 1, 3e5};

struct settings {
    bool list = false, ours_alone = false;
    effort spent = full;
    std::vector<std::string> ids;
};

std::vector<row> &rows()
{
    static std::vector<row> all;
    return all;
}

const std::string &id_of(const row &of)
{
    return std::visit([](const auto &each) -> const std::string & { return each.id; }, of);
}

const std::string &workload_of(const row &of)
{
    return std::visit([](const auto &each) -> const std::string & { return each.workload; }, of);
}

/* ---- measuring ---- */

figure figure_of(std::vector<double> samples)
{
    if (samples.empty())
        return {};
    std::ranges::sort(samples);
    const size_t quarter = samples.size() / 4;
    const double median = samples[samples.size() / 2];
    const double between = samples[samples.size() - 1 - quarter] - samples[quarter];
    return {median, between == 0 ? 0 : between / 2 / median};
}

/* Collects each contender's times for one turn of its loop. A contender's name is its place in the row. */
class collector : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context &) override { return true; }

    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs) {
            if (run.error_occurred)
                throw std::runtime_error(run.error_message);
            if (run.run_type == Run::RT_Iteration)
                times_[run.run_name.function_name].push_back(run.cpu_accumulated_time /
                                                             static_cast<double>(run.iterations));
        }
    }

    const std::vector<double> &times_of(const std::string &contender) { return times_[contender]; }

private:
    std::map<std::string, std::vector<double>> times_;
};

void initialise_benchmark(const effort &spent)
{
    std::vector<std::string> words = {"mova_bench", "--benchmark_enable_random_interleaving=true",
                                      "--benchmark_repetitions=" + std::to_string(spent.repetitions),
                                      std::string("--benchmark_min_time=") + spent.seconds};
    std::vector<char *> arguments;
    for (std::string &word : words)
        arguments.push_back(word.data());
    auto count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
}

/* Nanoseconds for one operation of each contender. */
figures measure(const timed_row &timed, const effort &spent)
{
    stay_on_this_processor();
    initialise_benchmark(spent);
    std::vector<timed_work> contenders = {timed.ours};
    for (const timed_peer &peer : timed.peers)
        contenders.push_back(peer.work);
    for (size_t i = 0; i < contenders.size(); ++i) {
        if (contenders[i])
            benchmark::RegisterBenchmark(std::to_string(i).c_str(), contenders[i]);
    }
    collector times;
    benchmark::RunSpecifiedBenchmarks(&times);
    figures result;
    for (size_t i = 0; i < contenders.size(); ++i) {
        const figure of_a_turn = figure_of(times.times_of(std::to_string(i)));
        result.push_back({of_a_turn.median * 1e9 / timed.operations, of_a_turn.spread});
    }
    return result;
}

std::optional<figures> figures_of(const timed_row &timed, const effort &spent)
{
    return in_a_child<figure>([&] { return measure(timed, spent); });
}

/* They take turns. */
std::optional<figures> figures_of(const measured_row &measured, const effort &spent)
{
    std::vector<measured_work> contenders = {measured.ours};
    for (const measured_peer &peer : measured.peers)
        contenders.push_back(peer.work);
    std::vector<std::vector<double>> samples(contenders.size());
    for (int turn = 0; turn < spent.measured_repetitions; ++turn) {
        for (size_t i = 0; i < contenders.size(); ++i) {
            if (!contenders[i])
                continue;
            const auto sample = in_a_child<double>([&] { return std::vector{contenders[i]()}; });
            if (!sample)
                return std::nullopt;
            samples[i].push_back(sample->front());
        }
    }
    figures result;
    for (const std::vector<double> &each : samples)
        result.push_back(figure_of(each));
    return result;
}

/* ---- the table ---- */

struct tally {
    int met = 0, missed = 0, too_noisy = 0, failed = 0;
};

void print_head()
{
    std::printf("%-4s %-48s %16s        %-14s %14s %9s\n", "row", "workload", "ours", "peer", "ratio", "target");
}

std::string spread_of(const figure &of)
{
    char text[16];
    std::snprintf(text, sizeof text, "±%.0f %%", of.spread * 100);
    return text;
}

/* The sign ± takes two bytes and one column. */
void print_figure(const figure &of, const char *unit)
{
    std::printf("%10.2f %-6s %-5s", of.median, spread_of(of).c_str(), unit);
}

void print_ours(const row &of, const figure &ours, const std::string &unit)
{
    std::printf("%-4s %-48s ", id_of(of).c_str(), workload_of(of).c_str());
    print_figure(ours, unit.c_str());
    std::printf("   ");
}

void print_indent(bool first)
{
    if (!first)
        std::printf("%*s", 79, "");
}

figure ratio_of(const figure &above, const figure &below)
{
    return {above.median / below.median, above.spread + below.spread};
}

/* Where the figure may as well lie on the other side of its target, it says nothing. */
const char *judged(const figure &reached, double target, bool met, tally &counts)
{
    if (std::abs(reached.median - target) < reached.spread * reached.median) {
        ++counts.too_noisy;
        return "too noisy";
    }
    ++(met ? counts.met : counts.missed);
    return met ? "met" : "MISSED";
}

/* One line a peer: how many times as long as we it takes. */
void print(const timed_row &timed, const figures &result, tally &counts)
{
    print_ours(timed, result[0], "ns");
    for (size_t i = 0; i < timed.peers.size(); ++i) {
        const timed_peer &peer = timed.peers[i];
        const figure ratio = ratio_of(result[i + 1], result[0]);
        print_indent(i == 0);
        std::printf("%-14s ", peer.name.c_str());
        if (std::isnan(ratio.median)) {
            std::printf("not on this machine\n");
            continue;
        }
        print_figure(ratio, "");
        if (peer.at_least != 0)
            std::printf(">= %4.2f  %s", peer.at_least,
                        judged(ratio, peer.at_least, ratio.median >= peer.at_least, counts));
        std::printf("\n");
    }
    if (timed.peers.empty())
        std::printf("\n");
}

figure smallest_of_peers(const figures &result)
{
    figure smallest = {HUGE_VAL, 0};
    for (size_t i = 1; i < result.size(); ++i) {
        if (result[i].median < smallest.median)
            smallest = result[i];
    }
    return smallest;
}

void print_target(const char *against, const figure &reached, double at_most, tally &counts)
{
    std::printf("%-14s ", against);
    print_figure(reached, "");
    std::printf("<= %4.2f  %s\n", at_most, judged(reached, at_most, reached.median <= at_most, counts));
}

/* Our figure against its target, then the peers' figures. */
void print(const measured_row &measured, const figures &result, tally &counts)
{
    print_ours(measured, result[0], measured.unit);
    const figure smallest = smallest_of_peers(result);
    if (measured.wanted.at_most != 0)
        print_target("", result[0], measured.wanted.at_most, counts);
    else if (measured.wanted.of_peers != 0 && smallest.median < HUGE_VAL)
        print_target("of the peers'", ratio_of(result[0], smallest), measured.wanted.of_peers, counts);
    else
        std::printf("\n");
    for (size_t i = 0; i < measured.peers.size(); ++i) {
        print_indent(false);
        std::printf("%-14s ", measured.peers[i].name.c_str());
        if (std::isnan(result[i + 1].median))
            std::printf("not on this machine");
        else
            print_figure(result[i + 1], measured.unit.c_str());
        std::printf("\n");
    }
}

void run_row(const row &chosen, const effort &spent, tally &counts)
{
    auto result = std::visit([&](const auto &each) { return figures_of(each, spent); }, chosen);
    if (result)
        std::visit([&](const auto &each) { print(each, *result, counts); }, chosen);
    else
        std::printf("%-4s %-48s failed\n", id_of(chosen).c_str(), workload_of(chosen).c_str());
    counts.failed += !result;
    std::fflush(stdout);
}

bool is_wanted(const row &candidate, const settings &wanted)
{
    const auto *timed = std::get_if<timed_row>(&candidate);
    if (timed && timed->operations > wanted.spent.most_operations)
        return false;
    return wanted.ids.empty() || std::ranges::count(wanted.ids, id_of(candidate));
}

row without_peers(row of)
{
    std::visit([](auto &each) { each.peers.clear(); }, of);
    return of;
}

int run_rows(const settings &wanted)
{
    tally counts;
    print_head();
    for (const row &each : rows()) {
        if (is_wanted(each, wanted))
            run_row(wanted.ours_alone ? without_peers(each) : each, wanted.spent, counts);
    }
    std::printf("%d of %d targets met", counts.met, counts.met + counts.missed + counts.too_noisy);
    std::printf(counts.too_noisy ? ", %d too noisy to say\n" : "\n", counts.too_noisy);
    return counts.failed ? 1 : 0;
}

int list_rows()
{
    for (const row &each : rows())
        std::printf("%-4s %s\n", id_of(each).c_str(), workload_of(each).c_str());
    return 0;
}

/* ---- the command line ---- */

bool is_row(const std::string &word)
{
    return std::ranges::any_of(rows(), [&](const row &each) { return id_of(each) == word; });
}

/* Returns what the command line asks for, or nothing after it has said what is wrong with it. */
std::optional<settings> read_command_line(int argc, char **argv)
{
    settings wanted;
    for (int i = 1; i < argc; ++i) {
        std::string word = argv[i];
        if (word == "--list")
            wanted.list = true;
        else if (word == "--ours")
            wanted.ours_alone = true;
        else if (word == "--quick")
            wanted.spent = quick;
        else if (word == "--once")
            wanted.spent = once;
        else if (is_row(word))
            wanted.ids.push_back(word);
        else {
            std::fprintf(stderr,
                         "mova_bench: no row \"%s\"; --list shows the rows, --quick and --once run them roughly, "
                         "--ours without the peers\n",
                         argv[i]);
            return std::nullopt;
        }
    }
    return wanted;
}

} // namespace

bool add_timed(timed_row row)
{
    rows().emplace_back(std::move(row));
    return true;
}

bool add_measured(measured_row row)
{
    rows().emplace_back(std::move(row));
    return true;
}

bool add_sized(const char *id, const std::string &workload, size_t count, sized_work ours,
               const std::vector<sized_peer> &peers)
{
    std::vector<timed_peer> timed;
    auto with = [count](sized_work work) { return [=](benchmark::State &state) { work(state, count); }; };
    for (const sized_peer &each : peers)
        timed.push_back({each.name, with(each.work), each.at_least});
    return add_timed({id, workload, static_cast<double>(count), with(ours), timed});
}

int run(int argc, char **argv)
{
    if (argc > 1 && std::string_view(argv[1]) == "--growth")
        return growth::run({argv + 2, argv + argc});
    std::ranges::stable_sort(rows(), {}, id_of);
    auto wanted = read_command_line(argc, argv);
    if (!wanted)
        return 1;
    return wanted->list ? list_rows() : run_rows(*wanted);
}

} // namespace scoreboard

int main(int argc, char **argv)
{
    return scoreboard::run(argc, argv);
}
