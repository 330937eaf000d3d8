/* SPDX-License-Identifier: MIT */
/* atlas: draws the world from a TopoJSON file, as a picture or in tiles. Reads, decodes, draws, writes, reports. */
#include <charconv>
#include <chrono>
#include <cinttypes>
#include <csignal>
#include <filesystem>
#include <optional>
#include <utility>
#include <variant>

#include <getopt.h>
#include <unistd.h>

#include <mova/host/errors.h>
#include <mova/host/messages.h>

#include "colours.h"
#include "tiles.h"

namespace atlas {

/* ---- options ---- */

struct Options {
    std::string file, out, tiles, page, attribution;
    int width, cache_budget, zoom;   /* pixels, bytes, the highest level */
    std::vector<std::string> select; /* names of countries; none stands for all of them */
    bool print_tree = false, help = false;
};

/* The usage of a number says what is allowed, and what it is without being given: "16 to 32768 (2048)". */
struct Option {
    const char *name, *value, *usage;
    std::variant<bool Options::*, int Options::*, std::string Options::*, std::vector<std::string> Options::*> member;
};

/* The only place of the options' names and limits; `./dev` reads it too. */
constexpr Option table[] = {
    {"out", "PNG", "the picture to write (atlas.png, where neither tiles nor a page are asked for)", &Options::out},
    {"width", "N", "its width in pixels, 16 to 32768 (2048); it is half as high", &Options::width},
    {"cache-budget", "BYTES",
     "how much of it is kept in memory, 32768 to 536870912 (1048576);\n"
     "                        the rest lies in a temporary file, in TMPDIR or /tmp;\n"
     "                        the 64 rows that are being drawn are not counted",
     &Options::cache_budget},
    {"select", "NAME,...", "draws only the countries of these names; may be given again", &Options::select},
    {"tiles", "MBTILES", "a pyramid of tiles to write, in Web Mercator, as a file of MBTiles", &Options::tiles},
    {"page", "DIRECTORY", "a page to write that shows these tiles, with them and all that it needs", &Options::page},
    {"zoom", "N", "how often the tiles' map becomes twice as large, 0 to 8 (5); the first is 256 pixels",
     &Options::zoom},
    {"attribution", "TEXT", "what tiles and page say of the data's origin", &Options::attribution},
    {"print-tree", "", "prints the tree that the countries are in, in order of their areas", &Options::print_tree},
    {"help", "", "shows this text", &Options::help},
};

struct Number {
    int least, most, usual;
};

static constexpr Number number_of(const Option &option)
{
    const char *at = option.usage;
    const auto is_digit = [&] { return *at >= '0' && *at <= '9'; };
    const auto next = [&] {
        int number = 0;
        while (!is_digit())
            ++at;
        for (; is_digit(); ++at)
            number = number * 10 + (*at - '0');
        return number;
    };
    return {next(), next(), next()};
}

static_assert(number_of(table[2]).least == 2 * tile_bytes, "two tiles at the least");
static_assert(number_of(table[2]).most == number_of(table[1]).most * (number_of(table[1]).most / 2), "the widest map");

static std::string usage()
{
    std::string synopsis = "usage: atlas FILE", rows;
    for (const Option &option : table) {
        const std::string words = std::string("--") + option.name + (*option.value ? " " : "") + option.value;
        if (&option + 1 != std::end(table)) /* --help goes without saying */
            synopsis += " [" + words + "]";
        rows += "  " + words + std::string(22 - words.size(), ' ') + option.usage + "\n";
    }
    return synopsis +
           "\n\nDraws a TopoJSON file as a map of the world, areas filled and outlined: its object\n"
           "\"countries\" where it has one, otherwise all its objects.\n\n" +
           rows;
}

static void take(bool &flag, const Option &, const std::string &)
{
    flag = true;
}

static void take(std::string &text, const Option &option, const std::string &value)
{
    if (value.empty())
        throw Error(std::string("--") + option.name + " needs a value (see atlas --help)");
    text = value;
}

static void take(int &number, const Option &option, const std::string &value)
{
    const auto [least, most, usual] = number_of(option);
    const char *const end = value.data() + value.size();
    const std::from_chars_result result = std::from_chars(value.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end || number < least || number > most)
        throw Error(std::string("--") + option.name + " takes a whole number from " + std::to_string(least) + " to " +
                    std::to_string(most) + ", not " + value);
}

static void take(std::vector<std::string> &names, const Option &option, const std::string &value)
{
    const std::string name = std::string("--") + option.name;
    if (value.starts_with("--"))
        throw Error(name + " needs names of countries, and is followed by " + value);
    const Error refusal(name + " takes names of countries, with a comma between them, not " + value);
    for (std::size_t start = 0, comma = 0; comma != std::string::npos; start = comma + 1) {
        comma = value.find(',', start);
        const std::string each = value.substr(start, comma - start);
        const std::size_t first = each.find_first_not_of(' ');
        if (first == std::string::npos)
            throw refusal;
        names.push_back(each.substr(first, each.find_last_not_of(' ') + 1 - first));
    }
}

/* What getopt_long has just refused: a letter, or the last word that it read. The numbers of options lie below letters. */
[[noreturn]] static void refuse(int answer, char **argv)
{
    const auto letter = static_cast<unsigned char>(optopt);
    const std::string option =
        letter > std::size(table) ? std::string("-") + static_cast<char>(letter) : argv[optind - 1];
    if (answer != ':')
        throw Error("unknown option " + option + " (see atlas --help)");
    if (option == "--select")
        throw Error("--select needs names of countries, as in --select \"Chad,South Sudan\"");
    throw Error(option + " needs a value (see atlas --help)");
}

/* Throws Error where the command line is wrong. */
static Options parse_options(int argc, char **argv)
{
    Options options;
    std::vector<option> known;
    for (const Option &each : table) {
        const int argument = *each.value ? required_argument : no_argument;
        known.push_back({each.name, argument, nullptr, static_cast<int>(known.size()) + 1});
        if (const auto *member = std::get_if<int Options::*>(&each.member))
            options.*(*member) = number_of(each).usual;
    }
    known.push_back({});
    opterr = 0;
    for (int found; (found = getopt_long(argc, argv, ":", known.data(), nullptr)) != -1;) {
        if (found >= static_cast<int>(known.size()))
            refuse(found, argv);
        const Option &given = table[found - 1];
        std::visit([&](auto member) { take(options.*member, given, optarg ? optarg : ""); }, given.member);
    }
    if (options.help)
        return options;
    if (argc - optind != 1)
        throw Error(optind == argc ? "no FILE given (see atlas --help)" : "more than one FILE (see atlas --help)");
    options.file = argv[optind];
    if (options.out.empty() && options.tiles.empty() && options.page.empty())
        options.out = "atlas.png";
    return options;
}

/* ---- what it says ---- */

/* Names and texts come from outside: whatever they hold, the message stays one plain line. */
static void complain(const std::string &subject, const std::string &what)
{
    std::fputs((printable("atlas: " + (subject.empty() ? what : subject + ": " + what)) + "\n").c_str(), stderr);
}

static void print_tree(const Topology &topology)
{
    const mova_text_fn before = mova_set_debug_print([](const char *text) { std::fputs(text, stdout); });
    print(index_by_area(topology));
    mova_set_debug_print(before);
}

static std::string count(std::size_t number, const std::string &one, const std::string &many)
{
    return std::to_string(number) + ' ' + (number == 1 ? one : many);
}

static std::string line_of(const char *what, const std::string &path)
{
    return what + printable(std::filesystem::absolute(path).lexically_normal().string()) + "\n";
}

/* What has been made, for the report, and by what work of the cache. */
struct Made {
    std::string lines;
    Picture::Statistics cache;
};

static void report(const Totals &drawn, const Made &made, const std::string &times)
{
    const Picture::Statistics &cache = made.cache;
    std::fputs(made.lines.c_str(), stdout);
    std::printf("drawn    %s, %s%s, %s\n", count(drawn.countries, "country", "countries").c_str(),
                count(drawn.rings, "ring", "rings").c_str(),
                drawn.lines > 0 ? (", " + count(drawn.lines, "line", "lines")).c_str() : "",
                count(drawn.points, "point", "points").c_str());
    std::printf("cache    %zu bytes for %zu tiles: %" PRIu64 " evictions, %" PRIu64 " write-backs, %" PRIu64
                " fetches, %" PRIu64 " blocks moved\n",
                cache.budget, cache.tiles, cache.evictions, cache.write_backs, cache.fetches, cache.moves);
    std::printf("time     %s\n", times.c_str());
    if (std::fflush(stdout) != 0)
        throw Error("the report could not be printed");
}

/* ---- what it does ---- */

static volatile std::sig_atomic_t stopped_by = 0;

/* What is drawn for long is stopped between two steps, so that nothing half made stays behind. What is ignored stays so. */
static void stop_between_steps()
{
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        if (std::signal(signal, [](int by) { stopped_by = by; }) == SIG_IGN)
            std::signal(signal, SIG_IGN);
    }
}

/* To be called with the name of a step when it is done. */
using Finished = std::function<void(const char *)>;

static void draw_picture(const Options &options, const Topology &topology, Made &made, const Progress &progress,
                         const Finished &finished)
{
    Drawing drawing(topology, {options.width, options.width / 2}, progress);
    finished("prepare");
    const auto paint = [&](const Tile &tile) { drawing.draw(tile); };
    Picture picture(drawing.size(), static_cast<std::size_t>(options.cache_budget), paint, progress);
    finished("draw");
    const std::size_t bytes = write_png(options.out, picture, palette(), progress);
    finished("write");
    made.cache += picture.statistics();
    made.lines += line_of("picture  ", options.out) + "size     " + std::to_string(picture.size().width) + " x " +
                  std::to_string(picture.size().height) + " pixels, " + count(bytes, "byte", "bytes") + "\n";
}

/* Draws each tile once, wherever it goes. */
static void draw_tiles(const Options &options, const Topology &topology, std::string &subject, Made &made,
                       const Progress &progress, const Finished &finished)
{
    stop_between_steps();
    const Legend legend = {std::filesystem::path(options.file).stem().string(), options.attribution, options.zoom};
    std::optional<TileFile> file;
    std::optional<Page> page;
    /* Calls `act` with each of the two that is wanted. */
    const auto with_each = [&](auto act) {
        if (!options.tiles.empty())
            act(file, subject = options.tiles);
        if (!options.page.empty())
            act(page, subject = options.page);
    };
    with_each([&](auto &store, const std::string &name) { store.emplace(name, legend); });
    std::size_t bytes = 0;
    const auto take = [&, colours = palette()](const Place &place, const std::uint8_t *pixels) {
        const auto png = encode_png({tile_side, tile_side}, colours, [=](int y) { return pixels + y * tile_side; });
        with_each([&](auto &store, const std::string &) { store->put(place, png); });
        bytes += png.size();
    };
    made.cache += draw_pyramid(topology, options.zoom, static_cast<std::size_t>(options.cache_budget), take, progress);
    with_each([](auto &store, const std::string &) { store->finish(); });
    finished("tiles");
    if (file)
        made.lines += line_of("tiles    ", options.tiles);
    if (page)
        made.lines += line_of("page     ", options.page + "/index.html");
    made.lines += "zoom     0 to " + std::to_string(options.zoom) + ": " +
                  count(tiles_up_to(options.zoom), "tile", "tiles") + ", " + count(bytes, "byte", "bytes") + "\n";
}

/* `subject` is kept up to date with the file that an error would be about. */
static void draw_atlas(const Options &options, std::string &subject)
{
    ProgressLine line(stderr, isatty(STDERR_FILENO) == 1);
    const Progress progress = [&](const char *step, std::size_t done, std::size_t all) {
        if (stopped_by)
            throw Error("stopped");
        line.update(step, done, all);
    };
    std::string times;
    const Finished finished = [&, last = std::chrono::steady_clock::now()](const char *step) mutable {
        const auto before = std::exchange(last, std::chrono::steady_clock::now());
        char text[64];
        std::snprintf(text, sizeof text, "%s%s %.1f ms", times.empty() ? "" : ", ", step,
                      std::chrono::duration<double, std::milli>(last - before).count());
        times += text;
    };

    subject = options.file;
    std::error_code ignored;
    for (const auto &[name, what] : {std::pair(&options.out, "picture"), {&options.tiles, "file of tiles"}}) {
        if (std::filesystem::equivalent(options.file, *name, ignored))
            throw Error("the " + std::string(what) + " would replace the file that it is drawn from");
    }
    const std::string text = read_file(options.file, progress);
    finished("read");
    Topology topology = decode_topology(text, progress);
    line.clear();
    for (const std::string &warning : topology.warnings)
        complain(subject, "warning: " + warning);
    if (!options.select.empty())
        select_countries(topology, options.select);
    if (options.print_tree)
        print_tree(topology);
    finished("decode");

    Made made = {};
    subject = options.out;
    if (!options.out.empty())
        draw_picture(options, topology, made, progress, finished);
    if (!options.tiles.empty() || !options.page.empty())
        draw_tiles(options, topology, subject, made, progress, finished);

    subject.clear();
    line.clear();
    report(totals(topology), made, times);
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
    if (options.help)
        return std::fputs(usage().c_str(), stdout) < 0 || std::fflush(stdout) != 0;
    last_words = printable("atlas: " + options.file + ": out of memory") + "\n";
    std::set_new_handler(end_without_memory);
    mova_set_error_handler(raise_error);
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
        atlas::complain(subject, error.what());
    }
    if (atlas::stopped_by) {
        std::signal(atlas::stopped_by, SIG_DFL);
        std::raise(atlas::stopped_by);
    }
    return 1;
}
