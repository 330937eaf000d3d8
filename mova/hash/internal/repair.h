/* SPDX-License-Identifier: MIT */
/* Closing the gap that a removal leaves in a hash table. */
#ifndef MOVA_HASH_INTERNAL_REPAIR_H
#define MOVA_HASH_INTERNAL_REPAIR_H

#include <climits>

#include <mova/frame/internal/assert.h>
#include <mova/hash/internal/invariants.h>
#include <mova/hash/internal/probe.h>
#include <mova/hash/internal/slots.h>

namespace mova::hash {

/* The rule: of the entries to the right of the hole, up to the end of the run, the rightmost whose home is not to the
   right of the hole moves into it. Its slot is the next hole; and again, until none may move.

   The removed slot is place 0, and both places and homes are counted from there: no wrapping then. A run in which the
   entry of place 0 was removed, and what becomes of it:

       place     0    1    2    3    4    5    6    7
       home      .    1   -2    0    3    1    2    6
       home      0    1   -2    2    3    1    6    .       3 moved to 0, then 6 to 3, then 7 to 6

   To look through the run anew for every hole would be slow. One pass is enough to know all entries that will move:

     1. From the end of the run to the left, collect as candidates the entries whose homes are less than all homes to
        their right: above, those of places 7 (home 6), 6 (2), 5 (1) and 3 (0). No other entry ever moves: one to its
        right may move wherever it may, and comes first. The pass ends at the first candidate whose home is not to the
        right of the hole. It is the rightmost such entry.
     2. Move the candidate that was found, the last in the collection. Its place is the hole.
     3. Find the next to move among the candidates that are left, which all are to the right of the hole. From the last
        to the first of them places and homes grow, so those that may move are the last ones, and of these the first
        moves; the others are dropped. Above, 5 is dropped when 6 moves. Go on with 2, unless none may move.
     4. The collection has room for 256. When it is full, pass 1 forgets all that it holds, which are the rightmost, and
        goes on. Then step 3 does not know whether the first candidate that is left moves: one that was forgotten may
        come before it. There the repair begins again with 1, from the hole that it has reached. */
class repair {
public:
    repair(HSH_table *table, size_t removed)
        : table_(table), mask_(mask_of(table)), removed_(removed),
          end_(static_cast<int32_t>((probe(table->keys, mask_, (removed + 1) & mask_, 0) - removed - 1) & mask_))
    {
        assert(!table->keys[removed]);
    }

    void run()
    {
        do {
            if (!collect()) /* 1 */
                break;
            do
                fill_hole_from(candidates_[--count_].place); /* 2 */
            while (find_next());                             /* 3 */
        } while (forgot_);                                   /* 4 */
        assert(intact(broken_run_invariant(*table_, removed_, end_ + 1)));
    }

private:
    struct candidate {
        int32_t place, home;
    };

    static constexpr int limit = 256;

    size_t slot_at(int32_t place) const { return (removed_ + static_cast<size_t>(place)) & mask_; }

    int32_t home_at(int32_t place) const
    {
        const size_t slot = slot_at(place);
        return place - static_cast<int32_t>((slot - home_of(table_, table_->keys[slot])) & mask_);
    }

    /* Returns true when the last candidate is the one to move first, and false when no entry may move. */
    bool collect()
    {
        count_ = 0;
        forgot_ = false;
        int32_t least = INT_MAX;
        for (int32_t place = end_; place > hole_; --place) {
            const int32_t home = home_at(place);
            if (home >= least)
                continue;
            least = home;
            add({place, home});
            if (home <= hole_)
                return true;
        }
        return false;
    }

    void add(candidate next)
    {
        if (count_ == limit) {
            count_ = 0;
            forgot_ = true;
        }
        candidates_[count_++] = next;
    }

    void fill_hole_from(int32_t place)
    {
        assert(hole_ < place && home_at(place) <= hole_); /* for invariant 5 */
        const size_t from = slot_at(place);
        const size_t to = slot_at(hole_);
        table_->keys[to] = table_->keys[from];
        table_->values[to] = table_->values[from];
        table_->keys[from] = 0;
        hole_ = place;
    }

    /* Returns true when the last candidate is the next to move, and false when none may move or nobody knows. */
    bool find_next()
    {
        while (count_ > 1 && candidates_[count_ - 2].home <= hole_)
            --count_;
        const bool known = count_ > (forgot_ ? 1 : 0);
        return known && candidates_[count_ - 1].home <= hole_;
    }

    HSH_table *table_;
    size_t mask_;
    size_t removed_;
    int32_t end_;
    int32_t hole_ = 0;
    int count_ = 0;
    bool forgot_ = false;
    candidate candidates_[limit];
};

} // namespace mova::hash

#endif
