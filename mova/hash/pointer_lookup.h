/* SPDX-License-Identifier: MIT */
/* Pointer lookup: a map from pointers, or other non-zero words, to words, quickest for the key that was added last.

   The pair added last stands in the record itself, in front of a hash table. The next pair pushes it into the table.

       add(A, 1)             add(B, 2)              add(A, 3)                  remove(A)

       front  A 1            front  B 2             front  A 3                 front  0 0
       table  -              table  A 1             table  A 1, B 2            table  A 1, B 2
                                                    get(A) is 3                get(A) is 1

   Invariants:
     1. `table` is a hash table with a minimum size of 8 and a maximum shift of 0.
     2. A key of 0 in front means that the front is empty; its value is then 0 too, unless a pair with key 0 was added.

   What the front slot leads to, and what is kept so on purpose:
     - A key may stand in front and in the table at once. Reading takes the front. Removing the key takes away the front
       pair alone, and the older value comes to light again, as above; a second removal takes that one away.
     - Key 0 is accepted in front, where it counts as empty: mova_lu_get of 0 returns the value that came with it, and
       the next pair overwrites it.
     - On release, the value in front is handed over unless it is 0; those in the table are handed over whatever they
       are.

   The table takes the home of a key from its low bits. Pointers have the same low bits, so searches pass many keys
   where there are many pointers: mova/hash/hash_table.h says more, and mova_lu_statistics how many. Where that matters,
   use a hash table with a shift.

   Ownership: the lookup owns its record and its table; the values are the caller's, who may free them in the callback
   of mova_lu_release. Errors: nothing is checked and nothing is raised. A null lookup is undefined, except on release.
   One thread at a time.

   Failures: an exception or a jump, out of the memory service or the callback, passes through, and the lookup is
   unchanged, where a function does not say otherwise. Nothing is lost by an exception. A jump out of the memory service
   loses what the call had allocated.

   Cost: constant for the key in front, else that of the hash table. */
#ifndef MOVA_HASH_POINTER_LOOKUP_H
#define MOVA_HASH_POINTER_LOOKUP_H

#include <mova/frame/host.h>
#include <mova/hash/hash_table.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* A lookup's record, which mova_lu_create makes and mova_lu_release frees. Programs read it, and change it through the
   functions alone. */
typedef struct mova_lookup {
    mova_word front_key, front_value; /* the pair added last; 0 where the front is empty */
    HSH_table *table;                 /* the other pairs; the lookup's own */
} mova_lookup;

/* Frees what a value stands for. Receives the address of the value. */
typedef void (*mova_lu_release_fn)(mova_word *value);

/* Returns a new empty lookup. */
mova_lookup *mova_lu_create(void) __attribute__((warn_unused_result));

/* Puts the pair in front. The pair that stood there moves into the table, in place of the value that the table had for
   its key. Returns the value of the pair that moved, or 0 where there was none. */
mova_word mova_lu_add(mova_lookup *lookup, mova_word key, mova_word value) __attribute__((nonnull(1)));

/* Returns the value of `key`, from the front or else from the table, or 0 where it is absent. */
mova_word mova_lu_get(const mova_lookup *lookup, mova_word key) __attribute__((nonnull(1)));

/* Removes the pair in front where it has this key, else the pair in the table, if there is one. */
void mova_lu_remove(mova_lookup *lookup, mova_word key) __attribute__((nonnull(1)));

/* Calls `release_value`, unless it is null, for the value in front where that is not 0, with the address in the record,
   and then for each value in the table, in the order of the slots, with the address of a copy. Frees the lookup and
   sets `*lookup` to null. Does nothing to a null lookup; `lookup` itself may be null. Linear.
   After an exception out of `release_value` the lookup is usable, and what had been handed over before is out of it: the
   front is empty, and such values in the table are 0, which a further release hands over as any other. After a jump
   nothing is missing: what had been handed over is there too. */
void mova_lu_release(mova_lookup **lookup, mova_lu_release_fn release_value);

/* Returns the statistics of the lookup's table, as mova_hash_table_statistics does. The pair in front is not in it. The
   shift of a lookup is always 0: `best_shift` is what a hash table would take for these keys. */
mova_hash_statistics mova_lu_statistics(const mova_lookup *lookup) __attribute__((nonnull(1)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#if !defined MOVA_NO_INLINE || defined MOVA_OWN_POINTER_LOOKUP
#include <mova/hash/inline/pointer_lookup.h>
#endif

#endif
