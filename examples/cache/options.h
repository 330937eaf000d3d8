/* SPDX-License-Identifier: MIT */
/* The command line of stations. */
#ifndef STATIONS_OPTIONS_H
#define STATIONS_OPTIONS_H

#include <cstdint>
#include <stdexcept>
#include <string>

namespace stations {

struct options {
    std::string url = "sqlite:stations.db";
    std::int64_t stations, rounds, batch, budget, hits, reads, patience, confirmed;
    bool verify = false, measure = false, help = false;
};

/* The command line is wrong. */
class usage_error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

options parse_options(int argc, char **argv);
std::string usage();

} // namespace stations

#endif
