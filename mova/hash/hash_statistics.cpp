/* SPDX-License-Identifier: MIT */
/* How well the keys of a table are spread, and over which of their bits they would be spread best. */
#include <mova/hash/hash_table.h>

#include <algorithm>
#include <bit>

#include <mova/hash/internal/slots.h>
#include <mova/hash/pointer_lookup.h>

namespace {

/* What searches look at: the slots of all hits together, and of the misses from each slot. */
struct ways {
    uint64_t hits, misses;
    int32_t longest_miss;
};

/* The ways in a table where `keys_at(slot)` keys have their home in a slot. Which key stands where depends on the order
   in which they came; which slots are taken does not, nor does the sum of the ways to the keys.

   Going up the slots, keys that do not find room are carried on to the next:

       home of     2    1    .    1    .      keys
       carried     1    1    .    .    .      out of the slot
       taken       x    x    x    x    .      a run of four: misses look at 5, 4, 3 and 2 slots, and at 1 in the last

     1. Find where to begin, for the table is a ring: behind the slot up to which the fewest keys belong for the slots
        there are. Nothing is carried out of it, and it stays empty.
     2. From there on add up what is carried, which every key is once for each slot that it stands behind its home, and
        the misses of each run when the empty slot behind it is reached. */
template <class KeysAt>
ways ways_of(int32_t capacity, const KeysAt &keys_at)
{
    int32_t first = 0;
    int32_t keys_less_slots = 0;
    int32_t least = 0;
    for (int32_t slot = 0; slot < capacity; ++slot) { /* 1 */
        keys_less_slots += keys_at(slot) - 1;
        if (keys_less_slots < least) {
            least = keys_less_slots;
            first = slot + 1;
        }
    }
    ways all = {0, 0, 0};
    int32_t carried = 0;
    int32_t run = 0;
    for (int32_t i = 0; i < capacity; ++i) { /* 2 */
        const int32_t here = carried + keys_at((first + i) & (capacity - 1));
        ++run;
        carried = std::max(here - 1, 0);
        all.hits += static_cast<uint64_t>(here);
        if (here)
            continue;
        all.misses += static_cast<uint64_t>(run) * static_cast<uint64_t>(run + 1) / 2;
        all.longest_miss = std::max(all.longest_miss, run);
        run = 0;
    }
    return all;
}

/* The slots that a hit and a miss look at in the mean, together. A table without keys has no hits. */
double mean_of_both(const HSH_table &table, const ways &all)
{
    return static_cast<double>(all.hits) / std::max(table.count, 1) + static_cast<double>(all.misses) / table.capacity;
}

/* Counts, for each slot, the keys that have their home there with `shift`. */
void count_homes(const HSH_table &table, int32_t shift, int32_t *counts)
{
    HSH_table shifted = table;
    shifted.shift = shift;
    std::fill_n(counts, table.capacity, 0);
    for (int32_t slot = 0; slot < table.capacity; ++slot) {
        if (table.keys[slot])
            ++counts[mova::hash::home_of(&shifted, table.keys[slot])];
    }
}

int32_t best_shift(const HSH_table &table, int32_t *counts)
{
    const int32_t most = 32 - std::countr_zero(static_cast<uint32_t>(table.capacity));
    int32_t best = 0;
    double least = 0;
    for (int32_t shift = 0; shift <= most; ++shift) {
        count_homes(table, shift, counts);
        const double mean =
            mean_of_both(table, ways_of(table.capacity, [counts](int32_t slot) { return counts[slot]; }));
        if (shift == 0 || mean < least) {
            least = mean;
            best = shift;
        }
    }
    return best;
}

int32_t best_shift(const HSH_table &table)
{
    const size_t bytes = static_cast<size_t>(table.capacity) * sizeof(int32_t);
    int32_t *counts = static_cast<int32_t *>(MM_alloc_item(bytes));
    const int32_t best = best_shift(table, counts);
    MM_dealloc_item(counts, bytes);
    return best;
}

} // namespace

mova_hash_statistics mova_hash_table_statistics(const HSH_table *table)
{
    mova_hash_statistics result = {};
    int64_t hits = 0;
    for (int32_t slot = 0; slot < table->capacity; ++slot) {
        if (!table->keys[slot])
            continue;
        const size_t home = mova::hash::home_of(table, table->keys[slot]);
        const int32_t way = static_cast<int32_t>((static_cast<size_t>(slot) - home) & mova::hash::mask_of(table)) + 1;
        hits += way;
        result.longest_hit = std::max(result.longest_hit, way);
    }
    const ways all = ways_of(table->capacity, [table](int32_t slot) { return table->keys[slot] ? 1 : 0; });
    result.load = static_cast<double>(table->count) / table->capacity;
    result.mean_hit = static_cast<double>(hits) / std::max(table->count, 1);
    result.mean_miss = static_cast<double>(all.misses) / table->capacity;
    result.longest_miss = all.longest_miss;
    result.best_shift = best_shift(*table);
    return result;
}

mova_hash_statistics mova_lu_statistics(const mova_lookup *lookup)
{
    return mova_hash_table_statistics(lookup->table);
}
