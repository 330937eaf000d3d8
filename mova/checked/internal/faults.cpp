/* SPDX-License-Identifier: MIT */
/* Explains a fault under mova-check: the checked host fills released blocks with a pattern that is no address. */
#include "blocks.h"
#include "report.h"
#include "symbols.h"

#if defined __x86_64__ && defined __linux__

#include <cstdio>
#include <cstdlib>

#include <signal.h>
#include <ucontext.h>
#include <unwind.h>

namespace mova::checked {

namespace {

/* A field of a record that lies where the pattern leads to. */
bool leads_out_of_released_block(greg_t value)
{
    constexpr uint64_t pattern = pattern_of_the_released * UINT64_C(0x0101010101010101);
    constexpr uint64_t largest_record = 4096;
    return static_cast<uint64_t>(value) - pattern < largest_record;
}

bool leads_out_of_released_block(const greg_t *registers)
{
    bool leads_out = false;
    for (int each = 0; each < REG_RIP; ++each)
        leads_out |= each != REG_RSP && leads_out_of_released_block(registers[each]);
    return leads_out;
}

/* The instruction that faulted, or, where it is in code without debug information, as that of memcpy, the nearest call that is
   in code with any. */
source_place place_of_fault(uintptr_t instruction)
{
    struct walk {
        uintptr_t from;
        source_place found;
        bool has_begun;
    };
    walk out = {instruction, source_of(reinterpret_cast<place>(instruction + 1)), false};
    if (out.found.has_line)
        return out.found;
    _Unwind_Backtrace(
        [](_Unwind_Context *frame, void *argument) {
            auto *const to = static_cast<walk *>(argument);
            const uintptr_t at = _Unwind_GetIP(frame);
            const bool was_called = to->has_begun;
            to->has_begun |= at == to->from;
            const source_place caller = was_called ? source_of(reinterpret_cast<place>(at)) : source_place{};
            if (caller.has_line)
                to->found = caller;
            return caller.has_line ? _URC_END_OF_STACK : _URC_NO_REASON;
        },
        &out);
    return out.found;
}

/* The system has set its own way of handling the fault again, and the instruction that faulted is what comes next. */
void explain(int, siginfo_t *fault, void *context)
{
    const greg_t *const registers = static_cast<const ucontext_t *>(context)->uc_mcontext.gregs;
    const void *since = nullptr;
    const char *what = mova_checked_explain_fault ? mova_checked_explain_fault(fault->si_addr, &since) : nullptr;
    if (!what && leads_out_of_released_block(registers))
        what = "a pointer out of a released block is followed";
    if (!what)
        return;
    const source_place at = place_of_fault(static_cast<uintptr_t>(registers[REG_RIP]));
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

/* A program that sets a handler of its own has that one alone. */
void explain_faults()
{
    struct sigaction before, own = {};
    if (!std::getenv("MOVA_CHECK_CLOSE") || sigaction(SIGSEGV, nullptr, &before) != 0 || before.sa_handler != SIG_DFL)
        return;
    own.sa_sigaction = explain;
    own.sa_flags = SA_SIGINFO | static_cast<int>(SA_RESETHAND);
    sigaction(SIGSEGV, &own, nullptr);
}

} // namespace mova::checked

#else

void mova::checked::explain_faults()
{
}

#endif
