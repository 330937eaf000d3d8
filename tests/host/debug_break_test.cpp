/* SPDX-License-Identifier: MIT */
#include <csignal>

#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <mova/frame/host.h>

namespace {

// Lets itself be traced, waits for the tracer, and breaks.
[[noreturn]] void run_traced()
{
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
        _exit(2);
    std::raise(SIGSTOP);
    debug_break();
    _exit(0);
}

// Breaks before it is traced, and then until a break stops it.
[[noreturn]] void run_traced_later()
{
    debug_break();
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
        _exit(2);
    std::raise(SIGSTOP);
    for (;;)
        debug_break();
}

// The signal that the child is stopped with, 0 where it is not stopped.
int stopped_with(pid_t child)
{
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSTOPPED(status) ? WSTOPSIG(status) : 0;
}

void resume(pid_t child)
{
    ptrace(PTRACE_CONT, child, nullptr, nullptr);
}

TEST(DebugBreak, StopsInAnAttachedDebuggerAndGoesOnFromThere)
{
    const pid_t child = fork();
    if (child == 0)
        run_traced();
    ASSERT_EQ(stopped_with(child), SIGSTOP);
    resume(child);
    ASSERT_EQ(stopped_with(child), SIGTRAP);
    resume(child);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(DebugBreak, StopsInADebuggerThatWasAttachedAfterThereWasNone)
{
    const pid_t child = fork();
    if (child == 0)
        run_traced_later();
    ASSERT_EQ(stopped_with(child), SIGSTOP);
    resume(child);
    EXPECT_EQ(stopped_with(child), SIGTRAP);
    kill(child, SIGKILL);
    EXPECT_EQ(stopped_with(child), 0);
}

TEST(DebugBreak, ADebuggerThatHasLeftIsNotTakenForOne)
{
    const pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            _exit(2);
        debug_break();
        debug_break();
        _exit(0);
    }
    ASSERT_EQ(stopped_with(child), SIGTRAP);
    ptrace(PTRACE_DETACH, child, nullptr, nullptr);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
}

} // namespace
