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

/* What a program calls by the names of the C library's functions, and how those are called here. */
#pragma GCC visibility push(default)
extern "C" {
int own_sigaction(int signal, const struct sigaction *handling, struct sigaction *before) __asm__("sigaction");
handler own_signal(int signal, handler set) __asm__("signal");
handler own_ssignal(int signal, handler set) __asm__("ssignal");
handler own_bsd_signal(int signal, handler set) __asm__("bsd_signal");
/* What signal() is called in programs that ask for System V's. */
handler own_system_v_signal(int signal, handler set) __asm__("__sysv_signal");
handler own_sysv_signal(int signal, handler set) __asm__("sysv_signal");
handler own_sigset(int signal, handler set) __asm__("sigset");
}
#pragma GCC visibility pop

int own_sigaction(int signal, const struct sigaction *handling, struct sigaction *before)
{
    const struct sigaction own = handling_of_program();
    const int result = mova_checked_system_sigaction(signal, handling, before);
    if (result == 0 && before && is_explanation(before->sa_handler))
        *before = own;
    if (signal == SIGSEGV && handling)
        mova::checked::explain_faults();
    return result;
}

handler own_signal(int signal, handler set)
{
    static setter *function;
    return set_by(function, "signal", signal, set);
}

handler own_ssignal(int signal, handler set)
{
    static setter *function;
    return set_by(function, "ssignal", signal, set);
}

handler own_bsd_signal(int signal, handler set)
{
    static setter *function;
    return set_by(function, "bsd_signal", signal, set);
}

handler own_system_v_signal(int signal, handler set)
{
    static setter *function;
    return set_by(function, "__sysv_signal", signal, set);
}

handler own_sysv_signal(int signal, handler set)
{
    static setter *function;
    return set_by(function, "sysv_signal", signal, set);
}

handler own_sigset(int signal, handler set)
{
    static setter *function;
    return set_by(function, "sigset", signal, set);
}
