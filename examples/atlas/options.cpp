/* SPDX-License-Identifier: MIT */
#include "options.h"

#include <charconv>
#include <string_view>

#include <getopt.h>

#include "messages.h"
#include "picture.h"

namespace atlas {

/* The table of the options, from which their limits and what they are without being given are read. */
static constexpr std::string_view table =
    R"(usage: atlas FILE [--out PNG] [--width N] [--cache-budget BYTES] [--select NAME,...] [--print-tree]

Draws a TopoJSON file as a map of the world, areas filled and outlined: its object
"countries" where it has one, otherwise all its objects.

  --out PNG             the picture to write (atlas.png)
  --width N             its width in pixels, 16 to 32768 (2048); it is half as high
  --cache-budget BYTES  how much of it is kept in memory, 32768 to 536870912 (1048576);
                        the rest lies in a temporary file, in TMPDIR or /tmp
  --select NAME,...     draws only the countries of these names; may be given again
  --print-tree          prints the tree that the countries are in, in order of their areas
  --help                shows this text
)";

const char *const usage = table.data();

struct Number {
    int least, most, usual;
};

/* Reads "16 to 32768 (2048)" behind the option. */
static constexpr Number number_of(std::string_view option)
{
    std::size_t at = table.find(option);
    const auto next = [&] {
        int number = 0;
        for (at = table.find_first_of("0123456789", at); table[at] >= '0' && table[at] <= '9'; ++at)
            number = number * 10 + (table[at] - '0');
        return number;
    };
    return {next(), next(), next()};
}

constexpr Number width = number_of("  --width N ");
constexpr Number cache_budget = number_of("  --cache-budget BYTES ");
static_assert(cache_budget.least == 2 * tile_bytes, "two tiles at the least");
static_assert(cache_budget.most == width.most * (width.most / 2), "the widest map at the most");

static int parse_number(const char *option, std::string_view text, const Number &allowed)
{
    int number = 0;
    const char *end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end || number < allowed.least || number > allowed.most)
        throw Error(std::string(option) + " takes a whole number from " + std::to_string(allowed.least) + " to " +
                    std::to_string(allowed.most) + ", not " + std::string(text));
    return number;
}

static std::string without_outer_spaces(const std::string &text)
{
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

static void add_names(std::vector<std::string> &names, const std::string &text)
{
    if (text.starts_with("--"))
        throw Error("--select needs names of countries, and is followed by " + text);
    std::size_t start = 0, comma = 0;
    for (; comma != std::string::npos; start = comma + 1) {
        comma = text.find(',', start);
        names.push_back(without_outer_spaces(text.substr(start, comma - start)));
        if (names.back().empty())
            throw Error("--select takes names of countries, with a comma between them, not " + text);
    }
}

/* Below every letter, so that a letter that getopt_long refuses is none of them. */
enum LongOption { option_out = 1, option_width, option_cache_budget, option_select, option_print_tree, option_help };

/* The option that getopt_long has just refused: a letter, or the last word that it read. */
static std::string refused_option(char **argv)
{
    return optopt >= ' ' ? std::string("-") + static_cast<char>(optopt) : argv[optind - 1];
}

static void apply(Options &options, int option, char **argv)
{
    switch (option) {
    case option_out: options.out = optarg; break;
    case option_width: options.width = parse_number("--width", optarg, width); break;
    case option_cache_budget:
        options.cache_budget = static_cast<std::size_t>(parse_number("--cache-budget", optarg, cache_budget));
        break;
    case option_select: add_names(options.select, optarg); break;
    case option_print_tree: options.print_tree = true; break;
    case option_help: options.help = true; break;
    case ':':
        if (refused_option(argv) == "--select")
            throw Error("--select needs names of countries, as in --select \"Chad,South Sudan\"");
        throw Error(refused_option(argv) + " needs a value (see atlas --help)");
    default: throw Error("unknown option " + refused_option(argv) + " (see atlas --help)");
    }
}

Options parse_options(int argc, char **argv)
{
    static const option known[] = {{"out", required_argument, nullptr, option_out},
                                   {"width", required_argument, nullptr, option_width},
                                   {"cache-budget", required_argument, nullptr, option_cache_budget},
                                   {"select", required_argument, nullptr, option_select},
                                   {"print-tree", no_argument, nullptr, option_print_tree},
                                   {"help", no_argument, nullptr, option_help},
                                   {nullptr, 0, nullptr, 0}};
    Options options;
    options.width = width.usual;
    options.cache_budget = static_cast<std::size_t>(cache_budget.usual);
    opterr = 0;
    for (int found; (found = getopt_long(argc, argv, ":", known, nullptr)) != -1;)
        apply(options, found, argv);
    if (options.help)
        return options;
    if (argc - optind != 1)
        throw Error(optind == argc ? "no FILE given (see atlas --help)" : "more than one FILE (see atlas --help)");
    options.file = argv[optind];
    return options;
}

} // namespace atlas
