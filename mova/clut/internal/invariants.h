/* SPDX-License-Identifier: MIT */
/* The numbered invariants of the colour table, as its header gives them. */
#ifndef MOVA_CLUT_INTERNAL_INVARIANTS_H
#define MOVA_CLUT_INTERNAL_INVARIANTS_H

#include <algorithm>

#include <mova/clut/internal/table_state.h>
#include <mova/frame/internal/module_records.h>

namespace mova::clut {

inline bool is_state(int32_t state)
{
    return state == free_index || state == hard_index || state == dynamic_index;
}

inline bool breaks_phase_invariant(const int32_t *states, const int32_t *end)
{
    if (modules.rgblut.static_phase)
        return table.dirty_index != 0 || std::find(states, end, int32_t{dynamic_index}) != end;
    return states[table.dirty_index] != dynamic_index;
}

/* Returns the number of the first invariant that the table breaks, or 0. */
inline int broken_invariant()
{
    const int32_t *states = table.states;
    const int32_t *end = states + table.size;
    if (!std::all_of(states, end, is_state))
        return 1;
    if (*end != free_index)
        return 2;
    if (breaks_phase_invariant(states, end))
        return 3;
    const int32_t *first_free = states + std::min(modules.rgblut.first_free_index, table.size);
    return std::find(states, first_free, int32_t{free_index}) == first_free ? 0 : 4;
}

} // namespace mova::clut

#endif
