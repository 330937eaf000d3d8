/* SPDX-License-Identifier: MIT */
#include "options.h"

#include <charconv>
#include <iterator>
#include <vector>

#include <getopt.h>

#include "station_cache.h"

namespace stations {

struct number_option {
    const char *name, *usage;
    std::int64_t options::*member;
    std::int64_t least, most, usual;
};

struct flag_option {
    const char *name, *usage;
    bool options::*member;
};

constexpr number_option numbers[] = {
    {"stations", "how many there are to be", &options::stations, 1, 10'000'000, 4096},
    {"rounds", "how often each station is advanced", &options::rounds, 0, 1'000'000, 1},
    {"batch", "bodies from one confirmation to the next", &options::batch, 1, 1'000'000, 256},
    {"budget", "bytes of memory for bodies", &options::budget, 2 * body_bytes, std::int64_t{1} << 31, 4 << 20},
    {"reads", "how many bodies are then read", &options::reads, 0, 1'000'000'000, 100'000},
    {"hits", "per cent of these that are in memory", &options::hits, 0, 100, 90},
    {"patience", "seconds that the store may take to answer", &options::patience, 1, 3600, 5},
    {"confirmed", "what --verify is to find at least", &options::confirmed, 0, INT64_MAX, 0},
};

constexpr flag_option flags[] = {
    {"verify", "reads every body back and compares it, changes nothing", &options::verify},
    {"measure", "reads at 50, 90 and 99 per cent, five times each in turns", &options::measure},
    {"help", "shows this text", &options::help},
};

std::string usage()
{
    std::string text = "usage: stations [URL] [OPTION]...\n\n"
                       "Keeps the readings of many stations in a store, through a cache that is smaller.\n"
                       "URL is sqlite:PATH[?max=BYTES], redis://HOST[:PORT][/N] or redis+unix:PATH\n"
                       "(sqlite:stations.db).\n\n";
    const auto add = [&](const std::string &words, const std::string &meaning) {
        text += "  " + words + std::string(16 - words.size(), ' ') + meaning + "\n";
    };
    for (const number_option &each : numbers)
        add(std::string("--") + each.name + " N", each.usage + (" (" + std::to_string(each.usual) + ")"));
    for (const flag_option &each : flags)
        add(std::string("--") + each.name, each.usage);
    return text;
}

static std::int64_t number_of(const number_option &option, const std::string &text)
{
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < option.least || number > option.most)
        throw usage_error(std::string("--") + option.name + " takes a whole number from " +
                          std::to_string(option.least) + " to " + std::to_string(option.most) + ", not " + text);
    return number;
}

options parse_options(int argc, char **argv)
{
    options given;
    std::vector<option> known;
    for (const number_option &each : numbers) {
        given.*each.member = each.usual;
        known.push_back({each.name, required_argument, nullptr, 0});
    }
    for (const flag_option &each : flags)
        known.push_back({each.name, no_argument, nullptr, 0});
    known.push_back({});
    opterr = 0;
    int index = 0;
    for (int found; (found = getopt_long(argc, argv, ":", known.data(), &index)) != -1;) {
        if (found != 0)
            throw usage_error(std::string(argv[optind - 1]) + (found == ':' ? " needs a value" : " is not understood") +
                              " (see stations --help)");
        const auto chosen = static_cast<std::size_t>(index);
        if (chosen < std::size(numbers))
            given.*numbers[chosen].member = number_of(numbers[chosen], optarg);
        else
            given.*flags[chosen - std::size(numbers)].member = true;
    }
    if (argc - optind > 1)
        throw usage_error("more than one URL (see stations --help)");
    if (optind < argc)
        given.url = argv[optind];
    return given;
}

} // namespace stations
