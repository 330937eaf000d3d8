/* SPDX-License-Identifier: MIT */
#ifndef MOVA_TESTS_HOST_CHILD_PROCESS_H
#define MOVA_TESTS_HOST_CHILD_PROCESS_H

#include <functional>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace mova::test {

/* Runs `work` in a child process, and returns what that returned. -1 where it could not begin, was ended by a signal, or did
   not end in time. */
inline int in_child(const std::function<int()> &work)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(work());
    if (child < 0)
        return -1;
    int status = 0;
    for (int waited = 0; waited < 60000; ++waited) {
        if (waitpid(child, &status, WNOHANG) == child)
            return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        usleep(1000);
    }
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    return -1;
}

} // namespace mova::test

#endif
