/* SPDX-License-Identifier: MIT */
#ifndef MOVA_FRAME_INTERNAL_UNDO_H
#define MOVA_FRAME_INTERNAL_UNDO_H

namespace mova {

/* Runs `action`. Where a host service or a callback ends it by an exception, runs `undo`, and lets the exception go on.
   The ordinary course pays nothing. A jump passes `undo` by: what has to hold after one holds before the call that
   jumps. */
template <class Action, class Undo>
inline auto or_undo(const Action &action, const Undo &undo) -> decltype(action())
{
    try {
        return action();
    } catch (...) {
        undo();
        throw;
    }
}

} // namespace mova

#endif
