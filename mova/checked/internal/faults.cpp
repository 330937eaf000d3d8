/* SPDX-License-Identifier: MIT */
/* Explains a fault under mova-check: the checked host fills released blocks with a pattern that is no address. */
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

/* How a fault was handled when the program began, and how the program handled it when that was looked at last. */
struct sigaction first_handling, own_handling;
bool is_explained; /* since then */

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

/* What is known of the fault is said. Then the program's own way of handling it, or the system's, is set again, and the
   instruction that faulted is what comes next; or the signal, where somebody sent it. A handler of the program's may come back
   here, for that is what it found when it was set: then the first way is the one. */
void explain(int signal, siginfo_t *fault, void *context)
{
    sigaction(SIGSEGV, is_explained ? &first_handling : &own_handling, nullptr);
    if (is_explained)
        return;
    is_explained = true;
    if (fault->si_code <= 0) {
        raise(signal);
        return;
    }
    const greg_t *const registers = static_cast<const ucontext_t *>(context)->uc_mcontext.gregs;
    const void *since = nullptr;
    const char *what = mova_checked_explain_fault ? mova_checked_explain_fault(fault->si_addr, &since) : nullptr;
    if (!what && leads_out_of_released_block(registers))
        what = "a pointer out of a released block is followed";
    if (!what)
        return;
    const source_place at = place_of_fault(static_cast<uintptr_t>(registers[instruction_register]));
    char text[800];
    const int length =
        std::snprintf(text, sizeof text, "mova: fault: %s\n  in         %-33s %s\n", what, at.function, at.line);
    if (since) {
        const source_place call = source_of(since);
        std::snprintf(text + length, sizeof text - static_cast<size_t>(length), "  since      %-33s %s\n",
                      call.function, call.line);
    }
    write_out(text);
}

} // namespace

void explain_faults()
{
    static const bool is_asked_for = std::getenv("MOVA_CHECK_CLOSE");
    struct sigaction now;
    if (!is_asked_for || sigaction(SIGSEGV, nullptr, &now) != 0 || now.sa_sigaction == explain)
        return;
    static bool has_begun;
    if (!has_begun)
        first_handling = now;
    has_begun = true;
    own_handling = now;
    is_explained = false;
    now.sa_sigaction = explain;
    now.sa_flags |= SA_SIGINFO;
    sigaction(SIGSEGV, &now, nullptr);
}

} // namespace mova::checked

#else

void mova::checked::explain_faults()
{
}

#endif
