/* SPDX-License-Identifier: MIT */
/* atlas: draws the world from a TopoJSON file. Reads, decodes, draws, writes, reports. */
#include <chrono>
#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <new>
#include <string>
#include <utility>

#include <unistd.h>

#include <mova/host/errors.h>
#include <mova/host/messages.h>

#include "colours.h"
#include "countries.h"
#include "draw.h"
#include "file.h"
#include "messages.h"
#include "options.h"
#include "picture.h"
#include "topology.h"

namespace atlas {

/* In milliseconds. */
struct Times {
    double read, decode, prepare, draw, write;
};

static void check_not_same(const std::string &file, const std::string &out)
{
    std::error_code ignored;
    if (std::filesystem::equivalent(file, out, ignored))
        throw Error("the picture would replace the file that it is drawn from");
}

static void print_tree(const Topology &topology)
{
    const mova_text_fn before = mova_set_debug_print([](const char *text) { std::fputs(text, stdout); });
    print(index_by_area(topology));
    mova_set_debug_print(before);
}

/* Names and texts come from outside: whatever they hold, the message stays one plain line. */
static std::string complaint(const std::string &subject, const std::string &what)
{
    return printable("atlas: " + (subject.empty() ? what : subject + ": " + what)) + "\n";
}

static void warn(const Topology &topology, const std::string &subject)
{
    for (const std::string &warning : topology.warnings)
        std::fputs(complaint(subject, "warning: " + warning).c_str(), stderr);
}

static std::string count(std::size_t number, const char *one, const char *many)
{
    return std::to_string(number) + ' ' + (number == 1 ? one : many);
}

static void report(const Options &options, const Totals &drawn, const Picture &picture, std::size_t bytes,
                   const Times &times)
{
    const Picture::Statistics cache = picture.statistics();
    std::printf("picture  %s\n", printable(std::filesystem::absolute(options.out).lexically_normal().string()).c_str());
    std::printf("size     %d x %d pixels, %zu bytes\n", picture.size().width, picture.size().height, bytes);
    std::printf("drawn    %s, %s%s, %s\n", count(drawn.countries, "country", "countries").c_str(),
                count(drawn.rings, "ring", "rings").c_str(),
                drawn.lines > 0 ? (", " + count(drawn.lines, "line", "lines")).c_str() : "",
                count(drawn.points, "point", "points").c_str());
    std::printf("cache    %zu bytes for %zu tiles: %" PRIu64 " evictions, %" PRIu64 " write-backs, %" PRIu64
                " fetches, %" PRIu64 " blocks moved\n",
                cache.budget, cache.tiles, cache.evictions, cache.write_backs, cache.fetches, cache.moves);
    std::printf("time     read %.1f ms, decode %.1f ms, prepare %.1f ms, draw %.1f ms, write %.1f ms\n", times.read,
                times.decode, times.prepare, times.draw, times.write);
    if (std::fflush(stdout) != 0)
        throw Error("the report could not be printed");
}

/* `subject` is kept up to date with the file that an error would be about. */
static void draw_atlas(const Options &options, std::string &subject)
{
    ProgressLine line(stderr, isatty(STDERR_FILENO) == 1);
    const Progress progress = [&](const char *step, std::size_t done, std::size_t all) {
        line.update(step, done, all);
    };
    Times times;
    auto lap = [last = std::chrono::steady_clock::now()]() mutable {
        const auto before = std::exchange(last, std::chrono::steady_clock::now());
        return std::chrono::duration<double, std::milli>(last - before).count();
    };

    subject = options.file;
    check_not_same(options.file, options.out);
    const std::string text = read_file(options.file, progress);
    times.read = lap();
    Topology topology = decode_topology(text, progress);
    line.clear();
    warn(topology, subject);
    if (!options.select.empty())
        select_countries(topology, options.select);
    if (options.print_tree)
        print_tree(topology);
    times.decode = lap();
    Drawing drawing(topology, options.width, progress);
    times.prepare = lap();

    subject = options.out;
    const auto paint = [&](const Tile &tile) { drawing.draw(tile); };
    Picture picture(drawing.size(), options.cache_budget, paint, progress);
    times.draw = lap();
    const std::size_t bytes = write_png(options.out, picture, palette(), progress);
    times.write = lap();

    subject.clear();
    line.clear();
    report(options, totals(topology), picture, bytes, times);
}

/* Where memory has run out, there is none left to unwind with either: the program says so and ends. */
static std::string last_words;

[[noreturn]] static void end_without_memory()
{
    [[maybe_unused]] const ssize_t wrote = write(STDERR_FILENO, last_words.data(), last_words.size());
    _exit(1);
}

static void raise_error(const char *module, std::int32_t line, std::int32_t code)
{
    if (code == MOVA_ALLOCATION_FAILED)
        end_without_memory();
    throw mova::error(module, line, code);
}

static int run(int argc, char **argv, std::string &subject)
{
    const Options options = parse_options(argc, argv);
    last_words = complaint(options.file, "out of memory");
    std::set_new_handler(end_without_memory);
    mova_set_error_handler(raise_error);
    if (options.help)
        return std::fputs(usage, stdout) < 0 || std::fflush(stdout) != 0;
    draw_atlas(options, subject);
    return 0;
}

} // namespace atlas

int main(int argc, char **argv)
{
    std::signal(SIGXFSZ, SIG_IGN); /* a file that grows past its limit is an error like a full disk */
    std::string subject;
    try {
        return atlas::run(argc, argv, subject);
    } catch (const std::exception &error) {
        std::fputs(atlas::complaint(subject, error.what()).c_str(), stderr);
        return 1;
    }
}
