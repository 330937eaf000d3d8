/* SPDX-License-Identifier: MIT */
/* Work in processes of its own, so that none meets the heap that another has left. */
#ifndef MOVA_BENCH_CHILD_H
#define MOVA_BENCH_CHILD_H

#include <cstdio>
#include <functional>
#include <optional>
#include <vector>

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

namespace scoreboard {

inline void stay_on_this_processor()
{
    cpu_set_t only;
    CPU_ZERO(&only);
    CPU_SET(static_cast<size_t>(sched_getcpu()), &only);
    sched_setaffinity(0, sizeof only, &only);
}

/* Does `work` in a child process and returns what it returned there, or nothing if the child failed.
   It returns no more than 64. */
template <class Result>
std::optional<std::vector<Result>> in_a_child(const std::function<std::vector<Result>()> &work)
{
    int ends[2];
    if (pipe(ends) != 0)
        return std::nullopt;
    std::fflush(nullptr);
    pid_t child = fork();
    if (child == 0) {
        const std::vector<Result> result = work();
        const size_t size = result.size() * sizeof(Result);
        _exit(write(ends[1], result.data(), size) == static_cast<ssize_t>(size) ? 0 : 1);
    }
    close(ends[1]);
    std::vector<Result> result(64);
    const ssize_t size = read(ends[0], result.data(), result.size() * sizeof(Result));
    close(ends[0]);
    int status = 1;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0 || size <= 0)
        return std::nullopt;
    result.resize(static_cast<size_t>(size) / sizeof(Result));
    return result;
}

} // namespace scoreboard

#endif
