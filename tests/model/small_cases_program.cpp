/* SPDX-License-Identifier: MIT */
/* Every operation from every small state of a family, and how many there are: what the file says, on every machine. */
#include "small_cases.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>

namespace {

using namespace mova::test;

/* A line of the file: the family, the bound, how many states, how many operations. */
std::optional<small_cases> pinned_in(const char *file, const std::string &family, std::size_t most)
{
    std::ifstream input(file);
    require(input.is_open(), std::string("cannot open ") + file);
    for (std::string line; std::getline(input, line);) {
        std::istringstream fields(line);
        std::string of_family;
        std::size_t bound = 0;
        small_cases pinned{};
        if (fields >> of_family >> bound >> pinned.states >> pinned.steps && of_family == family && bound == most)
            return pinned;
    }
    return std::nullopt;
}

bool are_as_pinned(const model &tried, std::size_t most, const char *file)
{
    const small_cases found = try_small_cases(tried, most);
    const bool same = pinned_in(file, tried.family, most) == found;
    std::printf("%-20s %zu %8" PRIu64 " %9" PRIu64 "%s\n", tried.family.c_str(), most, found.states, found.steps,
                same ? "" : "  DIFFERS");
    std::fflush(stdout);
    return same;
}

} // namespace

std::size_t bound_of(const model &each, const std::string &how)
{
    return how == "brief" ? each.small.brief : how == "full" ? each.small.full : std::stoul(how);
}

/* small_cases FILE brief|full|BOUND [FAMILY] */
int main(int argc, char **argv)
{
    const std::string how = argc >= 3 ? argv[2] : "";
    if (how != "brief" && how != "full" && std::strtoul(how.c_str(), nullptr, 10) == 0) {
        std::fprintf(stderr, "usage: small_cases FILE brief|full|BOUND [FAMILY]\n");
        return 2;
    }
    try {
        bool same = true;
        for (const model &each : models()) {
            if (argc == 3 || each.family == argv[3])
                same &= are_as_pinned(each, bound_of(each, how), argv[1]);
        }
        return same ? 0 : 1;
    } catch (const std::exception &failure) {
        std::fprintf(stderr, "small_cases: %s\n", failure.what());
        return 1;
    }
}
