/* SPDX-License-Identifier: MIT */
/* Runs a program on several allocators in turn, and says what processor time and memory each took beside the first.

   programs NAME LIBRARY... -- COMMAND...        plainly, and with each library preloaded; the medians of some rounds */
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int rounds = 5;

struct cost {
    double seconds, mebibytes;
};

[[noreturn]] void become(char **command, const char *library)
{
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    if (*library)
        setenv("LD_PRELOAD", library, 1);
    execvp(*command, command);
    _exit(127);
}

double seconds_of(const timeval &time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

/* What the command and all its children took: the processor time of all, the memory of the largest. */
cost cost_of(char **command, const char *library)
{
    const pid_t child = fork();
    if (child == 0)
        become(command, library);
    int status = 0;
    rusage usage = {};
    if (child < 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
        std::fprintf(stderr, "%s failed with %s\n", *command, *library ? library : "its own allocator");
        std::exit(1);
    }
    return {seconds_of(usage.ru_utime) + seconds_of(usage.ru_stime), static_cast<double>(usage.ru_maxrss) / 1024};
}

double median(const std::vector<cost> &costs, double cost::*figure)
{
    std::vector<double> figures;
    for (const cost &each : costs)
        figures.push_back(each.*figure);
    std::ranges::sort(figures);
    return figures[figures.size() / 2];
}

} // namespace

int main(int argc, char **argv)
{
    std::vector<std::string> libraries = {""};
    int at = 2;
    for (; at < argc && std::string(argv[at]) != "--"; ++at)
        libraries.emplace_back(argv[at]);
    if (at + 1 >= argc)
        return 1;
    std::vector<std::vector<cost>> costs(libraries.size());
    for (int round = 0; round < rounds; ++round) {
        for (size_t i = 0; i < libraries.size(); ++i)
            costs[i].push_back(cost_of(argv + at + 1, libraries[i].c_str()));
    }
    const double seconds = median(costs[0], &cost::seconds), mebibytes = median(costs[0], &cost::mebibytes);
    std::printf("%-8s glibc %6.2f s %7.1f MiB", argv[1], seconds, mebibytes);
    for (size_t i = 1; i < libraries.size(); ++i)
        std::printf("   %-20s %5.2f of its time, %5.2f of its memory",
                    libraries[i].substr(libraries[i].rfind('/') + 1).c_str(),
                    median(costs[i], &cost::seconds) / seconds, median(costs[i], &cost::mebibytes) / mebibytes);
    std::printf("\n");
}
