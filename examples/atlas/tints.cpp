/* SPDX-License-Identifier: MIT */
#include "tints.h"

#include "arc_table.h"

namespace atlas {

/* The usual tints take turns as the first choice; the others are for countries whose neighbours leave none of them. */
constexpr int usual_tints = 4;

static int choose_tint(mova_word taken, int turn)
{
    for (int i = 0; i < tint_count; ++i) {
        const int tint = i < usual_tints ? (turn + i) % usual_tints : i;
        if (!(taken >> tint & 1))
            return tint;
    }
    return turn;
}

Tints::Tints(const Topology &topology)
{
    ArcTable taken(topology); /* bit n of an arc's word: a country of tint n runs along it */
    int turn = 0;
    for (const Country *country : topology.countries) {
        mova_word around = 0;
        for_each_stretch(*country, [&](const Stretch &stretch) { around |= taken.get(stretch.arc); });
        const int tint = choose_tint(around, turn);
        for_each_stretch(*country, [&](const Stretch &stretch) {
            taken.set(stretch.arc, taken.get(stretch.arc) | mova_word{1} << tint);
        });
        mova_lu_add(tints_, reinterpret_cast<mova_word>(country), tint);
        turn = (turn + 1) % usual_tints;
    }
}

} // namespace atlas
