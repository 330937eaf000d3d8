/* Closing the gap that a removal leaves in a hash table. */
#ifndef MOVA_HASH_INTERNAL_REPAIR_H
#define MOVA_HASH_INTERNAL_REPAIR_H

#include <climits>

#include <mova/hash/hash_table.h>
#include <mova/hash/internal/probe.h>

namespace mova::hash {

inline size_t mask_of(const HSH_table *table)
{
    return static_cast<size_t>(table->mask);
}

inline size_t home_of(const HSH_table *table, mova_word key)
{
    return (static_cast<uint32_t>(key) >> table->shift) & mask_of(table);
}

/* The rule: of the run behind the hole, the rightmost entry whose home is not behind the hole moves into it; its slot is
   the next hole; and again, until none may move. The rule restarts from the end of the run each time. One pass from the
   end suffices: an entry that moves has its home before the homes of all entries to its right, or one of those would
   have moved instead. So only entries whose home is a new minimum are candidates, and the pass ends at the first whose
   home is not behind the hole. Once that one has moved, the next to move is found among the candidates.

   Places and homes are counted from the removed slot, which is place 0: no wrapping then. */
class repair {
public:
    repair(HSH_table *table, size_t removed)
        : table_(table), mask_(mask_of(table)), removed_(removed),
          end_(static_cast<int32_t>((probe(table->keys, mask_, (removed + 1) & mask_, 0) - removed - 1) & mask_))
    {
    }

    void run()
    {
        do {
            if (!collect())
                return;
            do
                fill_hole_from(candidates_[--count_].place);
            while (find_next());
        } while (dropped_);
    }

private:
    struct candidate {
        int32_t place, home;
    };

    /* What a stack has room for. A run with more candidates is passed again for each so many. */
    static constexpr int limit = 256;

    size_t slot_at(int32_t place) const { return (removed_ + static_cast<size_t>(place)) & mask_; }

    int32_t home_at(int32_t place) const
    {
        size_t slot = slot_at(place);
        return place - static_cast<int32_t>((slot - home_of(table_, table_->keys[slot])) & mask_);
    }

    /* Collects candidates from the end of the run, and returns true when the last collected is the one to move first. */
    bool collect()
    {
        count_ = 0;
        dropped_ = false;
        int32_t least = INT_MAX;
        for (int32_t place = end_; place > hole_; --place) {
            int32_t home = home_at(place);
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
            dropped_ = true;
        }
        candidates_[count_++] = next;
    }

    void fill_hole_from(int32_t place)
    {
        size_t from = slot_at(place);
        size_t to = slot_at(hole_);
        table_->keys[to] = table_->keys[from];
        table_->values[to] = table_->values[from];
        table_->keys[from] = 0;
        hole_ = place;
    }

    /* Drops the candidates that do not move, and returns true when the last one left is the next to move. Of the last of
       those that are left after others were dropped nobody knows whether it is the rightmost that may move. */
    bool find_next()
    {
        while (count_ > 1 && candidates_[count_ - 2].home <= hole_)
            --count_;
        bool known = count_ > (dropped_ ? 1 : 0);
        return known && candidates_[count_ - 1].home <= hole_;
    }

    HSH_table *table_;
    size_t mask_;
    size_t removed_;
    int32_t end_;
    int32_t hole_ = 0;
    int count_ = 0;
    bool dropped_ = false;
    candidate candidates_[limit];
};

} // namespace mova::hash

#endif
