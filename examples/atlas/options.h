/* SPDX-License-Identifier: MIT */
#ifndef ATLAS_OPTIONS_H
#define ATLAS_OPTIONS_H

#include <cstddef>
#include <string>
#include <vector>

namespace atlas {

extern const char *const usage;

struct Options {
    std::string file;
    std::string out = "atlas.png";
    int width;
    std::size_t cache_budget;        /* bytes */
    std::vector<std::string> select; /* names of countries; none stands for all of them */
    bool print_tree = false;
    bool help = false;
};

/* Throws Error where the command line is wrong. */
Options parse_options(int argc, char **argv);

} // namespace atlas

#endif
