/* SPDX-License-Identifier: MIT */
/* Explains a fault under mova-check: the checked host fills released blocks with a pattern that is no address. */
#include "faults.h"

#include "blocks.h"
#include "report.h"
#include "symbols.h"

#if (defined __x86_64__ || defined __i386__) && defined __linux__

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <gnu/libc-version.h>
#include <signal.h>
#include <ucontext.h>
#include <unwind.h>

namespace mova::checked {

namespace {

#if defined __x86_64__
constexpr int instruction_register = REG_RIP, stack_register = REG_RSP;
#else
constexpr int instruction_register = REG_EIP, stack_register = REG_ESP;
#endif

/* How the program handles a fault: what comes after the explanation. */
struct sigaction own_handling;

/* The instruction whose fault was explained last: where the program does not end it may come again. */
uintptr_t explained;

/* A field of a record that lies where the pattern leads to. */
bool leads_out_of_released_block(greg_t value)
{
    constexpr auto pattern = static_cast<uintptr_t>(pattern_of_the_released * UINT64_C(0x0101010101010101));
    constexpr uintptr_t largest_record = 4096;
    return static_cast<uintptr_t>(value) - pattern < largest_record;
}

bool leads_out_of_released_block(const greg_t *registers)
{
    bool leads_out = false;
    for (int each = 0; each < instruction_register; ++each)
        leads_out |= each != stack_register && leads_out_of_released_block(registers[each]);
    return leads_out;
}

/* Whether the C library is there, as a shared one. */
bool is_in_c_library(uintptr_t address)
{
    Dl_info library, found;
    return dladdr(reinterpret_cast<void *>(&gnu_get_libc_version), &library) != 0 &&
           dladdr(reinterpret_cast<void *>(address), &found) != 0 && found.dli_fbase == library.dli_fbase &&
           std::strstr(library.dli_fname, "libc.so");
}

/* The instruction that faulted, or, where that is the C library's, as memcpy's are, or has no debug information, the nearest call
   of which neither is true. */
source_place place_of_fault(uintptr_t instruction)
{
    struct walk {
        uintptr_t from;
        source_place found;
        bool has_begun;
    };
    walk out = {instruction, source_of(reinterpret_cast<place>(instruction + 1)), false};
    if (out.found.has_line && !is_in_c_library(instruction))
        return out.found;
    _Unwind_Backtrace(
        [](_Unwind_Context *frame, void *argument) {
            auto *const to = static_cast<walk *>(argument);
            const uintptr_t at = _Unwind_GetIP(frame);
            const bool was_called = to->has_begun;
            to->has_begun |= at == to->from;
            const source_place caller =
                was_called && !is_in_c_library(at) ? source_of(reinterpret_cast<place>(at)) : source_place{};
            if (caller.has_line)
                to->found = caller;
            return caller.has_line ? _URC_END_OF_STACK : _URC_NO_REASON;
        },
        &out);
    return out.found;
}

/* A handler of the program's may run on a small stack of its own, on which debug information cannot be read. */
bool is_stack_small()
{
    constexpr size_t enough = 131072;
    stack_t now;
    return sigaltstack(nullptr, &now) == 0 && (now.ss_flags & SS_ONSTACK) && now.ss_size < enough;
}

void say_what_is_known(const siginfo_t *fault, void *context)
{
    const greg_t *const registers = static_cast<const ucontext_t *>(context)->uc_mcontext.gregs;
    const auto instruction = static_cast<uintptr_t>(registers[instruction_register]);
    const void *since = nullptr;
    const char *what = mova_checked_explain_fault ? mova_checked_explain_fault(fault->si_addr, &since) : nullptr;
    if (!what && leads_out_of_released_block(registers))
        what = "a pointer out of a released block is followed";
    if (!what || instruction == explained)
        return;
    explained = instruction;
    const bool is_short = is_stack_small();
    const source_place at =
        is_short ? module_of(reinterpret_cast<place>(instruction + 1)) : place_of_fault(instruction);
    char text[800];
    const int length =
        std::snprintf(text, sizeof text, "mova: fault: %s\n  in         %-33s %s\n", what, at.function, at.line);
    if (since) {
        const source_place call = is_short ? module_of(since) : source_of(since);
        std::snprintf(text + length, sizeof text - static_cast<size_t>(length), "  since      %-33s %s\n",
                      call.function, call.line);
    }
    write_out(text);
}

/* What the program, or the system, would have done with the signal. Where that is not to handle it, the instruction that
   faulted comes next; a signal that somebody sent is sent again. */
void pass_on(int signal, siginfo_t *fault, void *context)
{
    const struct sigaction own = own_handling;
    const bool was_sent = fault->si_code <= 0;
    if (own.sa_flags & SA_SIGINFO) {
        own.sa_sigaction(signal, fault, context);
    } else if (own.sa_handler != SIG_DFL && own.sa_handler != SIG_IGN) {
        own.sa_handler(signal);
    } else if (own.sa_handler == SIG_DFL || !was_sent) {
        system_sigaction(signal, &own, nullptr);
        if (was_sent)
            raise(signal);
    }
}

void explain(int signal, siginfo_t *fault, void *context)
{
    if (fault->si_code > 0)
        say_what_is_known(fault, context);
    pass_on(signal, fault, context);
}

} // namespace

void explain_faults()
{
    static const bool is_asked_for = std::getenv("MOVA_CHECK_CLOSE");
    struct sigaction now;
    if (!is_asked_for || system_sigaction(SIGSEGV, nullptr, &now) != 0 || is_explanation(now.sa_handler))
        return;
    own_handling = now;
    now.sa_sigaction = explain;
    now.sa_flags |= SA_SIGINFO;
    system_sigaction(SIGSEGV, &now, nullptr);
}

bool is_explanation(void (*handler)(int))
{
    return reinterpret_cast<void *>(handler) == reinterpret_cast<void *>(explain);
}

struct sigaction handling_of_program()
{
    return own_handling;
}

} // namespace mova::checked

#else

namespace mova::checked {

void explain_faults()
{
}

bool is_explanation(void (*)(int))
{
    return false;
}

struct sigaction handling_of_program()
{
    return {};
}

} // namespace mova::checked

#endif
