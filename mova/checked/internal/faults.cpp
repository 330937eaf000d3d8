/* SPDX-License-Identifier: MIT */
/* Explains a fault under mova-check: the checked host fills released blocks with a pattern that is no address. */
#include "report.h"
#include "symbols.h"

#if defined __x86_64__ && defined __linux__

#include <cstdio>
#include <cstdlib>

#include <signal.h>
#include <ucontext.h>

namespace mova::checked {

namespace {

/* A field of a record that lies where the pattern leads to. */
bool leads_out_of_released_block(greg_t value)
{
    constexpr uint64_t pattern = 0xDFDFDFDFDFDFDFDFu;
    constexpr uint64_t largest_record = 4096;
    return static_cast<uint64_t>(value) - pattern < largest_record;
}

/* The system has set its own way of handling the fault again, and the instruction that faulted is what comes next. */
void explain(int, siginfo_t *, void *context)
{
    const greg_t *const registers = static_cast<const ucontext_t *>(context)->uc_mcontext.gregs;
    bool leads_out = false;
    for (int each = 0; each < REG_RIP; ++each)
        leads_out |= each != REG_RSP && leads_out_of_released_block(registers[each]);
    if (!leads_out)
        return;
    const source_place at = source_of(reinterpret_cast<place>(registers[REG_RIP] + 1));
    char text[400];
    std::snprintf(text, sizeof text,
                  "mova: fault: a pointer out of a released block is followed\n  in         %-33s %s\n", at.function,
                  at.line);
    write_out(text);
}

/* A program that sets a handler of its own has that one alone. */
__attribute__((constructor)) void explain_faults()
{
    struct sigaction before, own = {};
    if (!std::getenv("MOVA_CHECK_CLOSE") || sigaction(SIGSEGV, nullptr, &before) != 0 || before.sa_handler != SIG_DFL)
        return;
    own.sa_sigaction = explain;
    own.sa_flags = SA_SIGINFO | static_cast<int>(SA_RESETHAND);
    sigaction(SIGSEGV, &own, nullptr);
}

} // namespace

} // namespace mova::checked

#endif
