/* SPDX-License-Identifier: MIT */
/* What headers cost the compiler: its processor time for a source that includes them and nothing else. */
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include <sys/resource.h>

#include <bench/scoreboard.h>

namespace {

using headers = std::vector<const char *>;

double milliseconds_of(const timeval &time)
{
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

/* Called in a process of its own, which has no other children. */
double milliseconds_to_compile(const std::string &compiler, const headers &included)
{
    std::string source;
    for (const char *each : included)
        source += std::string("#include <") + each + ">\\n";
    const std::string command = "printf '" + source + "' | " + compiler + " -O2 -c -o /dev/null -I " MOVA_SOURCE " -";
    if (std::system(command.c_str()) != 0)
        return std::nan("");
    rusage usage = {};
    getrusage(RUSAGE_CHILDREN, &usage);
    return milliseconds_of(usage.ru_utime) + milliseconds_of(usage.ru_stime);
}

scoreboard::measured_work compile(const std::string &compiler, const headers &included)
{
    return [=] { return milliseconds_to_compile(compiler, included); };
}

const bool registered = [] {
    const std::string c = MOVA_C_COMPILER " -x c " MOVA_GLIB_FLAGS, cxx = MOVA_CXX_COMPILER " -x c++ -std=c++20";
    scoreboard::add_measured({"X4",
                              "compile mova/container.h in C",
                              "ms",
                              compile(c, {"mova/container.h"}),
                              {},
                              {{"glib.h", compile(c, {"glib.h"})}, {"nothing", compile(c, {})}}});
    scoreboard::add_measured({"X4",
                              "compile mova/container.h in C++",
                              "ms",
                              compile(cxx, {"mova/container.h"}),
                              {},
                              {{"<map>", compile(cxx, {"map"})}, {"nothing", compile(cxx, {})}}});
    scoreboard::add_measured({"X4",
                              "compile mova/cxx.h in C++",
                              "ms",
                              compile(cxx, {"mova/cxx.h"}),
                              {},
                              {{"<map>", compile(cxx, {"map"})},
                               {"<unordered_map>", compile(cxx, {"unordered_map"})},
                               {"both", compile(cxx, {"map", "unordered_map"})},
                               {"<ranges>", compile(cxx, {"ranges"})}}});
    return true;
}();

} // namespace
