/* SPDX-License-Identifier: MIT */
/* Programs on the checked libraries beside themselves on the ordinary ones, and built with the address sanitizer: how many times
   as long they take. The sanitizer sees the program, not the library, which runs on the host that it can watch. */
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <bench/scoreboard.h>

namespace {

/* How a program is run. */
struct run {
    std::string program;
    const char *libraries; /* the directory of those that it takes */
};

/* Returns what the program prints. */
std::string said_by(const run &what, const std::string &arguments)
{
    const std::string command =
        "LD_LIBRARY_PATH='" + std::string(what.libraries) + "' '" + what.program + "' " + arguments;
    FILE *const output = popen(command.c_str(), "r");
    std::string said;
    for (int byte; output && (byte = std::fgetc(output)) != EOF;)
        said += static_cast<char>(byte);
    if (!output || pclose(output) != 0)
        throw std::runtime_error("failed: " + command);
    return said;
}

/* Nanoseconds of processor time, as the program says. */
double told_time(const run &what, const std::string &arguments)
{
    return std::stod(said_by(what, arguments));
}

/* Seconds of processor time that the program takes. */
double taken_time(const run &what, const std::string &arguments)
{
    const auto used_by_children = [] {
        rusage used;
        getrusage(RUSAGE_CHILDREN, &used);
        return static_cast<double>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) +
               static_cast<double>(used.ru_utime.tv_usec + used.ru_stime.tv_usec) / 1e6;
    };
    const double before = used_by_children();
    said_by(what, arguments);
    return used_by_children() - before;
}

using measure = double (*)(const run &, const std::string &arguments);

/* One program's time divided by another's, which runs right before. */
scoreboard::measured_work ratio(measure time, const run &above, const run &below, const std::string &arguments)
{
    return [=] {
        const double ordinary = time(below, arguments);
        return time(above, arguments) / ordinary;
    };
}

bool add_works()
{
    const run ordinary = {WORKS, ORDINARY_LIBRARIES}, checked = {WORKS, CHECKED_LIBRARIES},
              sanitized = {SANITIZED_WORKS, ORDINARY_LIBRARIES};
    for (const char *const work :
         {"append and release", "walk", "tree insertion", "tree search", "hash insertion", "hash hit"}) {
        const std::string argument = "'" + std::string(work) + "'";
        scoreboard::add_measured({"X1",
                                  std::string(work) + ", 1e5, checked over ordinary",
                                  "times",
                                  ratio(told_time, checked, ordinary, argument),
                                  {4, 0},
                                  {{"sanitizer", ratio(told_time, sanitized, ordinary, argument)}}});
    }
    return true;
}

bool add_map()
{
    const run ordinary = {ATLAS, ORDINARY_LIBRARIES}, checked = {ATLAS, CHECKED_LIBRARIES},
              sanitized = {SANITIZED_ATLAS, ORDINARY_LIBRARIES};
    const std::string arguments = "'" ATLAS_DATA "' --out '" PICTURE "'";
    return scoreboard::add_measured({"X1",
                                     "the map, checked over ordinary",
                                     "times",
                                     ratio(taken_time, checked, ordinary, arguments),
                                     {3, 0},
                                     {{"sanitizer", ratio(taken_time, sanitized, ordinary, arguments)}}});
}

const bool works_added = add_works(), map_added = add_map();

} // namespace
