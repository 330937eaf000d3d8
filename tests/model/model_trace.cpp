/* SPDX-License-Identifier: MIT */
/* Of each family, the digest of all that can be seen of so many operations: prints it, or compares it with what was seen
   on other machines. */
#include "model.h"
#include "trace.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

using namespace mova::test;

constexpr std::size_t bytes_of_a_run = 400;

/* The seeds count up from 1. */
std::string digest_of(const model &traced, uint64_t operations, bool prints_calls)
{
    trace written(prints_calls);
    const uint64_t last = byte_interpreter::operations_done + operations;
    for (uint32_t seed = 1; byte_interpreter::operations_done < last; ++seed) {
        written.begin_run();
        trace::current = &written;
        traced.run(random_bytes(seed, bytes_of_a_run));
        trace::current = nullptr;
    }
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016" PRIx64, written.digest());
    return digits;
}

/* A line of the file: a family, how many operations, the digest, and that of a word of 32 bits where it is another. */
struct pinned_digest {
    std::string family;
    uint64_t operations;
    std::string digest, of_short_word;

    const std::string &here() const
    {
        return sizeof(mova_word) == 4 && !of_short_word.empty() ? of_short_word : digest;
    }
};

std::vector<pinned_digest> pinned_in(const char *file)
{
    std::ifstream input(file);
    require(input.is_open(), std::string("cannot open ") + file);
    std::vector<pinned_digest> pinned;
    for (std::string line; std::getline(input, line);) {
        std::istringstream fields(line);
        pinned_digest read;
        if (line.starts_with('#') || !(fields >> read.family >> read.operations >> read.digest))
            continue;
        fields >> read.of_short_word;
        pinned.push_back(read);
    }
    return pinned;
}

/* Every family must have its line. Returns how many digests differ. */
int compare(const char *file, uint64_t operations)
{
    const std::vector<pinned_digest> pinned = pinned_in(file);
    int differences = 0;
    for (const model &traced : models()) {
        const auto line = std::ranges::find_if(pinned, [&](const pinned_digest &each) {
            return each.family == traced.family && each.operations == operations;
        });
        const std::string found = digest_of(traced, operations, false);
        const bool same = line != pinned.end() && line->here() == found;
        std::printf("%s %" PRIu64 " %s%s\n", traced.family.c_str(), operations, found.c_str(), same ? "" : "  DIFFERS");
        differences += !same;
    }
    return differences;
}

} // namespace

/* model_trace OPERATIONS FILE: compares; model_trace OPERATIONS FAMILY: prints each call too. */
int main(int argc, char **argv)
{
    const uint64_t operations = argc == 3 ? std::strtoull(argv[1], nullptr, 10) : 0;
    if (operations == 0) {
        std::fprintf(stderr, "usage: model_trace OPERATIONS FILE|FAMILY\n");
        return 2;
    }
    try {
        const std::string given = argv[2];
        const auto named = std::ranges::find(models(), given, &model::family);
        if (named == models().end())
            return compare(argv[2], operations) ? 1 : 0;
        std::printf("%s\n", digest_of(*named, operations, true).c_str());
    } catch (const std::exception &failure) {
        std::fprintf(stderr, "model_trace: %s\n", failure.what());
        return 1;
    }
}
