/* SPDX-License-Identifier: MIT */
/* Faults under mova-check: they are explained before the program handles them. */
#ifndef MOVA_CHECKED_INTERNAL_FAULTS_H
#define MOVA_CHECKED_INTERNAL_FAULTS_H

#include <signal.h>

/* The C library's sigaction, in the shared library, which has one of its own: shared/signals.cpp. */
extern "C" __attribute__((weak, visibility("hidden"))) int
mova_checked_system_sigaction(int signal, const struct sigaction *handling, struct sigaction *before);

namespace mova::checked {

inline int system_sigaction(int signal, const struct sigaction *handling, struct sigaction *before)
{
    return mova_checked_system_sigaction ? mova_checked_system_sigaction(signal, handling, before)
                                         : sigaction(signal, handling, before);
}

/* Has faults explained before they are handled as they are now, where mova-check asks for it. */
void explain_faults();

/* Whether that is the handler that explains faults. */
bool is_explanation(void (*handler)(int));

/* How the program handles what is explained. */
struct sigaction handling_of_program();

} // namespace mova::checked

#endif
