#ifndef MOVA_TESTS_SUPPORT_VERIFY_COLOUR_TABLE_H
#define MOVA_TESTS_SUPPORT_VERIFY_COLOUR_TABLE_H

#include <mova/clut/internal/table_state.h>
#include <mova/frame/internal/module_records.h>

#include <algorithm>

namespace mova::test {

inline bool breaks_phase_invariant(const int32_t *states, const int32_t *end)
{
    if (modules.rgblut.static_phase)
        return clut::table.dirty_index != 0 || std::count(states, end, clut::dynamic_index) != 0;
    return states[clut::table.dirty_index] != clut::dynamic_index;
}

/* Returns the number, as the header gives it, of the first invariant that the table breaks, or 0. */
inline int broken_colour_table_invariant()
{
    const int32_t *states = clut::table.states;
    const int32_t *end = states + clut::table.size;
    if (!std::all_of(states, end, [](int32_t state) { return state >= 0 && state <= 2; }))
        return 1;
    if (*end != clut::free_index)
        return 2;
    if (breaks_phase_invariant(states, end))
        return 3;
    const int32_t *first_free = states + std::min(modules.rgblut.first_free_index, clut::table.size);
    return std::find(states, first_free, clut::free_index) == first_free ? 0 : 4;
}

} // namespace mova::test

#endif
