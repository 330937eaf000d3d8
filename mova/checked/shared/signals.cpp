/* SPDX-License-Identifier: MIT */
/* How a program handles SIGSEGV, where faults are explained first: what it sets comes after the explanation, and what it asks
   for is what it has set. The functions of these names that a program finds are the ones here: the shared library comes before
   the C library. */
#include <mova/checked/internal/faults.h>

#include <dlfcn.h>

namespace {

using mova::checked::handling_of_program;
using mova::checked::is_explanation;
using handler = void (*)(int);

/* The C library's function; any of that name, where it comes first after all. */
template <class Function>
Function *next(Function *&known, const char *name)
{
    if (!known) {
        void *const found = dlsym(RTLD_NEXT, name);
        known = reinterpret_cast<Function *>(found ? found : dlsym(RTLD_DEFAULT, name));
    }
    return known;
}

/* Sets a handler by one of the functions that return which it was before. */
using setter = handler(int signal, handler set);
handler set_by(setter *&function, const char *name, int signal, handler set)
{
    const struct sigaction own = handling_of_program();
    const handler before = next(function, name)(signal, set);
    if (signal == SIGSEGV)
        mova::checked::explain_faults();
    return is_explanation(before) ? own.sa_handler : before;
}

} // namespace

int mova_checked_system_sigaction(int signal, const struct sigaction *handling, struct sigaction *before)
{
    using asker = int(int signal, const struct sigaction *handling, struct sigaction *before);
    static asker *function;
    return next(function, "sigaction")(signal, handling, before);
}

#pragma GCC visibility push(default)
extern "C" {

int sigaction(int signal, const struct sigaction *handling, struct sigaction *before) noexcept
{
    const struct sigaction own = handling_of_program();
    const int result = mova_checked_system_sigaction(signal, handling, before);
    if (result == 0 && before && is_explanation(before->sa_handler))
        *before = own;
    if (signal == SIGSEGV && handling)
        mova::checked::explain_faults();
    return result;
}

handler signal(int signal, handler set) noexcept
{
    static setter *function;
    return set_by(function, "signal", signal, set);
}

handler ssignal(int signal, handler set) noexcept
{
    static setter *function;
    return set_by(function, "ssignal", signal, set);
}

handler bsd_signal(int signal, handler set) noexcept
{
    static setter *function;
    return set_by(function, "bsd_signal", signal, set);
}

/* What signal() is called in programs that ask for System V's. */
handler __sysv_signal(int signal, handler set) noexcept
{
    static setter *function;
    return set_by(function, "__sysv_signal", signal, set);
}

handler sysv_signal(int signal, handler set) noexcept
{
    static setter *function;
    return set_by(function, "sysv_signal", signal, set);
}

handler sigset(int signal, handler set) noexcept
{
    static setter *function;
    return set_by(function, "sigset", signal, set);
}
}
#pragma GCC visibility pop
