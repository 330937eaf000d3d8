/* SPDX-License-Identifier: MIT */
/* Hash table: an open-addressing table from machine words to machine words.

   A key is any word but 0, a pointer or an integer; keys are compared as words and nothing is called back. Keys and
   values lie in two parallel arrays, so that a search reads only keys. 0 marks an empty slot. A key's home slot is
   `(key >> shift) & mask`, taken from the low 32 bits of the key. A key stands in its home slot, or, where that was
   taken, in the next slot that was free; after the last slot comes slot 0.

       HSH_table                slot     0    1    2    3    4    5    6    7
       +-----------------+    +-------------------------------------------------+
       | minimum_size  8 |    | keys     22   30    1    .    .    .   14    7  |   a run of five keys that wraps
       | capacity      8 |    | home      6    6    1                   6    7  |
       | count         5 |    +-------------------------------------------------+
       | …_water_mark    |      after HSH_remove_entry(table, 14):
       | mask          7 |    +-------------------------------------------------+
       | shift         0 |    | keys     22    1    .    .    .    .   30    7  |
       | maximum_shift 0 |    | home      6    1                        6    7  |
       | keys, values    |    +-------------------------------------------------+
       +-----------------+

   A removal leaves no mark. The run that follows the hole is looked through from its end: the last entry whose home does
   not come after the hole moves into it and leaves a new hole, until no entry may move. Above, 30 fills the hole of
   14 (22, which is nearer, stays), and 1 fills that of 30.

   Invariants:
     1. `minimum_size` and `capacity` are powers of two, at least 8, and `capacity` is not below `minimum_size`.
     2. `mask` is `capacity` - 1, and `shift` is the smaller of `maximum_shift` and 32 - log2(`capacity`).
     3. `low_water_mark` is a quarter of `capacity`, or 0 where `capacity` is `minimum_size`; `high_water_mark` is seven
        eighths of `capacity`.
     4. `count` is the number of occupied slots, not below the low and not above the high mark. So one slot is empty.
     5. From the home slot of each key, every slot as far as the key is occupied, and none before it holds that key.
   The value word of an empty slot means nothing; it keeps what was stored there last.

   What an edit does to an iterator: HSH_set_value of a stored key does nothing to it. A new key or a removal may
   move entries or resize the table, and the iterator may then repeat or skip entries; HSH_release kills it. Nothing
   detects this. To remove while walking, collect the keys first.

   The table doubles when a new key comes at seven eighths, and halves when a removal leaves less than a quarter. It has
   2^30 slots at most: a key that comes when those are full by seven eighths (939,524,096 keys) is undefined. A resize
   puts the entries into the new arrays in the order of the old slots. The same calls lead to the same words in the same
   slots on every platform, as long as the keys fit into its word.

   Choosing the maximum shift. Searches are quick as long as the keys spread over all home slots. Take the number of low
   bits that are the same in all keys:

       keys                                              maximum shift
       dense or random integers                          0
       pointers to blocks, aligned to 16                 4
       pointers to records of one array, of 48 bytes     4 (48 is 3 times two to the 4th)
       pages of 4096 bytes                               12

   Too small a shift leaves most home slots unused: with addresses aligned to 16 and a shift of 0 every 16th slot is a
   home, and a search passes dozens of keys; with pages it passes thousands. Too large a shift gives neighbouring keys
   one home, with the same effect. Keys that agree in their low 32 bits always share a home; they are different keys
   all the same. A search for an absent key that falls into a long run walks to the run's end: dense keys are one run,
   so mix them with other keys only where misses are rare. Addresses that are thinly spread over several times the
   table's width, with the shift that fits them, lap over each other and may crowd one part of it: searches for absent
   keys then walk thousands of slots where a smaller shift, with more laps, walks dozens. mova_hash_table_statistics tells
   how long the ways are, and which shift makes them shortest.

   Ownership: the table owns its record and its two arrays, and never looks at what keys and values point to. Errors:
   nothing is checked and nothing is raised. A null table is undefined. One thread at a time.

   Failures: an exception or a jump out of the memory service passes through, and the table is unchanged. Nothing is lost
   by an exception. A jump loses what the call had allocated.

   Cost: a search reads the keys from the home slot on; where keys spread well that is one or two cache lines. A removal
   looks once through the rest of the run, and once more for every 256 entries that move. A resize is linear. */
#ifndef MOVA_HASH_HASH_TABLE_H
#define MOVA_HASH_HASH_TABLE_H

#include <stddef.h>
#include <stdint.h>

#include <mova/frame/host.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* A table's record, which HSH_create makes and HSH_release frees. Programs read it, and change it through the functions
   alone. */
typedef struct HSH_table {
    int32_t minimum_size;     /* slots that it never shrinks below */
    int32_t capacity;         /* slots */
    int32_t count;            /* of them occupied */
    int32_t low_water_mark;   /* a removal that leaves less halves the table */
    int32_t high_water_mark;  /* a new key that finds as many doubles it */
    int32_t mask;             /* takes the home slot from a shifted key */
    int32_t shift;            /* low key bits that are dropped at this capacity */
    int32_t maximum_shift;    /* and at every capacity, at most */
    mova_word *keys, *values; /* slot by slot; a key of 0 is an empty slot */
} HSH_table;

/* An iterator, which the caller keeps and which owns nothing. */
typedef struct HSH_iterator {
    HSH_table *table; /* that it walks over */
    int32_t index;    /* the next slot to look at */
} HSH_iterator;

/* How far searches walk. A way is the number of slots that a search looks at, the last one included. Misses are taken to
   begin at each slot equally often. */
typedef struct mova_hash_statistics {
    double load;          /* the part of the slots that is occupied: 0 to 7/8 */
    double mean_hit;      /* way to a key that is stored: 1 is best; 0 where there is no key */
    double mean_miss;     /* way to find that a key is absent */
    int32_t longest_hit;  /* 0 where there is no key */
    int32_t longest_miss; /* likewise, of an absent key */
    int32_t best_shift;   /* the maximum shift with which these keys, at this capacity, had the shortest ways: the least
                             sum of both means, and of equal ones the smallest shift */
} mova_hash_statistics;

/* Returns a new empty table with `initial_size` slots, rounded up to a power of two and to at least 8. It never shrinks
   below that. (To hold n keys without growing it takes more than n * 8 / 7 slots.) `maximum_shift` bounds the number of
   low key bits that are dropped, as said above.
   Requires an initial size of at most 2^30 and a maximum shift of 0 or more. Linear in the size. */
HSH_table *HSH_create(uint32_t initial_size, int32_t maximum_shift) __attribute__((warn_unused_result));

/* Frees the table and sets `*table` to null. Requires a table there. */
void HSH_release(HSH_table **table) __attribute__((nonnull(1)));

/* Stores `value` for `key`, in place of what was stored for it, and returns it. Does nothing and returns 0 where the
   key is 0. A new key may resize the table: then linear. */
mova_word HSH_set_value(HSH_table *table, mova_word key, mova_word value) __attribute__((nonnull(1)));

/* Returns the value of `key`, or 0 where it is absent. HSH_contains_key tells a stored 0 from an absent key. */
mova_word HSH_get_value(const HSH_table *table, mova_word key) __attribute__((nonnull(1)));

/* Returns 1 where `key` is stored, else 0. */
int HSH_contains_key(const HSH_table *table, mova_word key) __attribute__((nonnull(1)));

/* Returns the first of a table's slots, from `slot` on and around the end, that holds `key` or is empty. The three above go on
   with it where the key's home slot is another key's; programs have no use for it. `mask` is the table's. Linear in the
   number of slots that are passed. */
size_t mova_hash_find_slot(const mova_word *keys, size_t mask, size_t slot, mova_word key) __attribute__((nonnull(1)));

/* Removes `key` and its value. Returns -1 where the key is absent, else a number that is not negative and says nothing
   more. May resize the table: then linear. */
int HSH_remove_entry(HSH_table *table, mova_word key) __attribute__((nonnull(1)));

/* Returns an iterator over all entries, in the order of their slots. It allocates nothing. */
HSH_iterator HSH_all_entries(HSH_table *table) __attribute__((nonnull(1)));

/* Stores the next key and its value and returns 1, or returns 0 and stores nothing when the iteration is over. Linear
   in the number of empty slots that are passed. */
int HSH_next(HSH_iterator *iterator, mova_word *key, mova_word *value) __attribute__((nonnull(1)));

/* Returns how well the keys are spread, to find out why a table is slow: where `mean_hit` is above 3 or `longest_miss` in
   the thousands, make the table with `best_shift`, or mix the keys before they are stored. Changes nothing. Allocates 4
   bytes a slot for as long as it runs. Linear, once for each shift that the table could have: like filling up to 30
   tables of this size. */
mova_hash_statistics mova_hash_table_statistics(const HSH_table *table) __attribute__((nonnull(1)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#if !defined MOVA_NO_INLINE || defined MOVA_OWN_HASH_TABLE
#include <mova/hash/inline/hash_table.h>
#endif

#endif
