/* SPDX-License-Identifier: MIT */
/* Which colour each country gets. */
#ifndef ATLAS_TINTS_H
#define ATLAS_TINTS_H

#include <mova/hash/pointer_lookup.h>

#include "topology.h"

namespace atlas {

constexpr int tint_count = 6;

/* A number from 0 to `tint_count` - 1 for each country. Two that share an arc of their rings get different ones, as
   long as their neighbours leave any. */
class Tints {
public:
    explicit Tints(const Topology &topology);
    ~Tints() { mova_lu_release(&tints_, nullptr); }
    Tints(const Tints &) = delete;
    Tints &operator=(const Tints &) = delete;

    int of(const Country &country) const
    {
        return static_cast<int>(mova_lu_get(tints_, reinterpret_cast<mova_word>(&country)));
    }

private:
    mova_lookup *tints_ = mova_lu_create(); /* from country to tint */
};

} // namespace atlas

#endif
