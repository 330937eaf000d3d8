/* SPDX-License-Identifier: MIT */
#include "scoreboard.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>
#include <stdexcept>
#include <variant>

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

namespace scoreboard {
namespace {

using row = std::variant<timed_row, measured_row>;
using figures = std::vector<double>; /* ours, then the peers'; not a number where a peer is not to be had */

/* How much time a row is given, and which rows are left out as too long. After `once` the figures mean nothing: it shows
   that the rows run. */
struct effort {
    const char *repetitions, *seconds;
    double most_operations;
};
constexpr effort full = {"11", "0.1", HUGE_VAL}, quick = {"3", "0.01", HUGE_VAL}, once = {"1", "0", 3e5};

struct settings {
    bool list = false;
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

    double median(const std::string &contender)
    {
        std::vector<double> &times = times_[contender];
        if (times.empty())
            return std::nan("");
        auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
        std::nth_element(times.begin(), middle, times.end());
        return *middle;
    }

private:
    std::map<std::string, std::vector<double>> times_;
};

void stay_on_this_processor()
{
    cpu_set_t only;
    CPU_ZERO(&only);
    CPU_SET(static_cast<size_t>(sched_getcpu()), &only);
    sched_setaffinity(0, sizeof only, &only);
}

void initialise_benchmark(const effort &spent)
{
    std::vector<std::string> words = {"mova_bench", "--benchmark_enable_random_interleaving=true",
                                      std::string("--benchmark_repetitions=") + spent.repetitions,
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
    for (size_t i = 0; i < contenders.size(); ++i)
        result.push_back(times.median(std::to_string(i)) * 1e9 / timed.operations);
    return result;
}

/* Does `work` in a child process and returns what it returned there, or nothing if the child failed. */
std::optional<figures> in_a_child(const std::function<figures()> &work)
{
    int ends[2];
    if (pipe(ends) != 0)
        return std::nullopt;
    std::fflush(nullptr);
    pid_t child = fork();
    if (child == 0) {
        figures result = work();
        size_t size = result.size() * sizeof(double);
        _exit(write(ends[1], result.data(), size) == static_cast<ssize_t>(size) ? 0 : 1);
    }
    close(ends[1]);
    figures result(64);
    ssize_t size = read(ends[0], result.data(), result.size() * sizeof(double));
    close(ends[0]);
    int status = 1;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0 || size <= 0)
        return std::nullopt;
    result.resize(static_cast<size_t>(size) / sizeof(double));
    return result;
}

std::optional<figures> figures_of(const timed_row &timed, const effort &spent)
{
    return in_a_child([&] { return measure(timed, spent); });
}

std::optional<figures> figures_of(const measured_row &measured, const effort &)
{
    std::vector<measured_work> contenders = {measured.ours};
    for (const measured_peer &peer : measured.peers)
        contenders.push_back(peer.work);
    figures result;
    for (const measured_work &work : contenders) {
        auto figure = work ? in_a_child([&] { return figures{work()}; }) : figures{std::nan("")};
        if (!figure)
            return std::nullopt;
        result.push_back(figure->front());
    }
    return result;
}

/* ---- the table ---- */

struct tally {
    int met = 0, missed = 0, failed = 0;
};

void print_head()
{
    std::printf("%-4s %-48s %16s   %-14s %9s %9s\n", "row", "workload", "ours", "peer", "ratio", "target");
}

void print_ours(const row &of, double figure, const std::string &unit)
{
    std::printf("%-4s %-48s %10.2f %-5s   ", id_of(of).c_str(), workload_of(of).c_str(), figure, unit.c_str());
}

void print_indent(bool first)
{
    if (!first)
        std::printf("%*s", 73, "");
}

const char *judged(bool met, tally &counts)
{
    ++(met ? counts.met : counts.missed);
    return met ? "met" : "MISSED";
}

/* One line a peer: how many times as long as we it takes. */
void print(const timed_row &timed, const figures &result, tally &counts)
{
    print_ours(timed, result[0], "ns");
    for (size_t i = 0; i < timed.peers.size(); ++i) {
        const timed_peer &peer = timed.peers[i];
        double ratio = result[i + 1] / result[0];
        print_indent(i == 0);
        if (std::isnan(ratio))
            std::printf("%-14s not on this machine\n", peer.name.c_str());
        else if (peer.at_least == 0)
            std::printf("%-14s %9.2f\n", peer.name.c_str(), ratio);
        else
            std::printf("%-14s %9.2f   >= %4.2f  %s\n", peer.name.c_str(), ratio, peer.at_least,
                        judged(ratio >= peer.at_least, counts));
    }
}

double smallest_of_peers(const figures &result)
{
    double smallest = HUGE_VAL;
    for (size_t i = 1; i < result.size(); ++i)
        smallest = std::fmin(smallest, result[i]);
    return smallest;
}

void print_target(const char *against, double figure, double at_most, tally &counts)
{
    std::printf("%-14s %9.2f   <= %4.2f  %s\n", against, figure, at_most, judged(figure <= at_most, counts));
}

/* Our figure against its target, then the peers' figures. */
void print(const measured_row &measured, const figures &result, tally &counts)
{
    print_ours(measured, result[0], measured.unit);
    const double smallest = smallest_of_peers(result);
    if (measured.wanted.at_most != 0)
        print_target("", result[0], measured.wanted.at_most, counts);
    else if (measured.wanted.of_peers != 0 && smallest < HUGE_VAL)
        print_target("of the peers'", result[0] / smallest, measured.wanted.of_peers, counts);
    else
        std::printf("\n");
    for (size_t i = 0; i < measured.peers.size(); ++i) {
        const char *name = measured.peers[i].name.c_str();
        print_indent(false);
        if (std::isnan(result[i + 1]))
            std::printf("%-14s not on this machine\n", name);
        else
            std::printf("%-14s %9.2f %s\n", name, result[i + 1], measured.unit.c_str());
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

int run_rows(const settings &wanted)
{
    tally counts;
    print_head();
    for (const row &each : rows()) {
        if (is_wanted(each, wanted))
            run_row(each, wanted.spent, counts);
    }
    std::printf("%d of %d targets met\n", counts.met, counts.met + counts.missed);
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
        else if (word == "--quick")
            wanted.spent = quick;
        else if (word == "--once")
            wanted.spent = once;
        else if (is_row(word))
            wanted.ids.push_back(word);
        else {
            std::fprintf(stderr,
                         "mova_bench: no row \"%s\"; --list shows the rows, --quick and --once run them roughly\n",
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
