/* SPDX-License-Identifier: MIT */
/* Colour lookup table: the one table of the process that says, for every colour index, what colour it shows and whether
   it is taken.

   Below, a table of 256 entries after its first three requests, which handed out 40, 41 and 42, and the release of 41:

               fixed      the standard colours         dirty                first free
                                                         v                      v
       index   0 … 19  |  20 … 38                  |   39      |   40      |   41   |   42      |  43 … 255
       state   hard    |  hard                     |   dynamic |   dynamic |   free |   dynamic |  free
       colour  black   |  GE_WHITE … GE_DRKCYAN    |   black, until CLUT_set gives another one
                                                                                         spare word after it: 0 (free)

   The table has two phases. RGBLUT_init begins the static phase, in which CLUT_alloc, and CLUT_set on a free index,
   make indices hard: fixed for the life of the process. The first CLUT_new_index ends it for good. It reserves one
   index, the dirty index, which it and all later requests answer with when the table is full; from then on indices are
   dynamic.

       what it does to an index    free                         hard          dynamic    the dirty index
       CLUT_alloc                  hard; raises 168 when        raises 169    raises     raises
                                   the static phase is over
       CLUT_set, CLUT_set_RGB      as CLUT_alloc; colour        colour        colour     colour
       CLUT_new_index              dynamic, the lowest one      -             -          handed out when full
       CLUT_release_index          raises 241                   raises 241    free       nothing
       CLUT_get                    -                            -             -          -
       CLUT_copy, either index     raises 303                   -             -          -

   Invariants of a table that was made without a raise, until line 191 is raised, the host returns from a raise, or
   RGBLUT_init or CLUT_release_index ends by a jump:
     1. Every state is free (0), hard (1) or dynamic (2).
     2. The spare word after the last state is free. No function changes it; CLUT_statistics counts it.
     3. In the static phase no index is dynamic and the dirty index reads 0; after it the dirty index is dynamic.
     4. No index below both the first free index and the size is free.

   Ownership: the table is the library's, and lives as long as the process. It is allocated with the standard library's
   calloc, 4 bytes for each index and 4 more, and 6 for each index, and the result is not examined: where there is no
   memory, RGBLUT_init is undefined. Pointers and the callback are the caller's.

   Errors have the module name "RGBLUT" and the code MOVA_PRECONDITION_BROKEN; the functions give the lines. A raise
   comes before any change, except in RGBLUT_init (line 134) and CLUT_new_index (line 191). Where the host returns from
   one, the function goes on with its next step, so that a further raise may follow; but as soon as it would touch an
   index outside the table it returns, with the result 0. A negative index raises nothing and is outside in every
   function.

   Failures: an exception or a jump, out of the callback, a raise, the debug output, the warning or debug_break, passes
   through. After an exception the table is unchanged, where a function does not say otherwise. After a jump it is
   usable: what the function had changed before it called what jumped stays.

   There are no locks: all calls come from one thread. The callback may read and set colours, and it must not initialise
   the table again.

   Cost: constant, where nothing else is said. */
#ifndef MOVA_CLUT_COLOUR_TABLE_H
#define MOVA_CLUT_COLOUR_TABLE_H

#include <mova/frame/host.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Told of a colour change. The components are those of the call, 0 to 255 in use. */
typedef void (*CLUT_callback)(int32_t index, int16_t red, int16_t green, int16_t blue);

/* What is written to the debug output: 0 nothing, from 1 on (and below 0) the initialisation and every index that is
   allocated, handed out or freed, from 2 on also every colour that is set or read. The library only reads it. A program
   may set it at any time, before RGBLUT_init too, and may define it itself, with the value that it is to have from the
   start. */
extern int32_t clut_debug;

/* All colours of the table, for the body of CLUT_get in its caller. Programs have no use for it; the library alone writes
   it. No colours until RGBLUT_init. */
typedef struct clut_colour {
    int16_t red, green, blue; /* as they were set: 0 to 255 in use */
} clut_colour;

/* The colours of all indices, and how many they are. */
typedef struct clut_colours {
    int32_t size;             /* colours; not negative */
    const clut_colour *first; /* that of index 0; the table's own */
} clut_colours;

/* Those of the table. */
extern clut_colours clut_shown;

/* The indices of the standard colours: 0 until RGBLUT_init assigns them. Beside each its index and its red, green and
   blue. */
extern int32_t GE_CLEAR;    /* 21   255 255 255 */
extern int32_t GE_WHITE;    /* 20   255 255 255 */
extern int32_t GE_BLACK;    /* 22     0   0   0 */
extern int32_t GE_RED;      /* 23   255   0   0 */
extern int32_t GE_LRED;     /* 24   237 164 164 */
extern int32_t GE_GREEN;    /* 28     0 255   0 */
extern int32_t GE_BLUE;     /* 25     0   0 255 */
extern int32_t GE_GRAY;     /* 27   127 127 127 */
extern int32_t GE_LGRAY;    /* 26   220 220 220 */
extern int32_t GE_GRAY144;  /* 36   144 144 144 */
extern int32_t GE_GRAY164;  /* 37   164 164 164 */
extern int32_t GE_CYAN;     /* 29     0 255 255 */
extern int32_t GE_MAG;      /* 30   189   0 189 */
extern int32_t GE_DRKGREEN; /* 31     0 200   0 */
extern int32_t GE_DRKMAG;   /* 32   200   0 200 */
extern int32_t GE_DRKBLU;   /* 33     0   0 200 */
extern int32_t GE_DRKCYAN;  /* 38     0 200 200 */
extern int32_t GE_DRKGRAY;  /* 34   100 100 100 */
extern int32_t GE_SYS32;    /* 35   never set: black, and the callback is not told */

/* Makes the table, once per process. `entries` is the number of indices, at least 39; 0 without a callback means 256.
   Indices 0 to 38 become hard, the standard colours get theirs, and `callback`, which may be null, is told of each of
   those. `client_word` is kept and never read.
   Under clut_debug it announces the size that the table had before (0, unless the host returned from line 93), which is
   deliberate; the table of 256 entries that 0 stands for is not announced. Linear.
   Raises line 93 when the table is made already. Where the host returns, a new table replaces the old one: all colours
   and states are gone, and the standard colours are assigned from the present first free index on.
   Raises line 134 when the table is smaller than the indices up to the last standard colour. The table is made all the
   same, and the index words are assigned, but no index is hard and no colour is set.
   After an exception out of the callback or the debug output nothing has happened, to an older table neither, and it may
   be called again. A jump loses an older table. It leaves the new one, in the static phase, with the standard colours
   that were set before it; the other indices up to 38 are free and below the first free index, where no request finds
   them: make them hard by CLUT_set and CLUT_alloc. A jump out of the announcement leaves a table without indices. */
void RGBLUT_init(int32_t entries, CLUT_callback callback, mova_word client_word);

/* Makes a free index hard.
   Raises line 167 before RGBLUT_init, 168 when the static phase is over, 169 when the index is not free. */
void CLUT_alloc(int32_t index);

/* Hands out the lowest free index, or the dirty index when there is none; the user is then warned, once for each run of
   such answers. The first call ends the static phase, with or without a raise of line 191. Calls debug_break on entry.
   Linear in the indices that are taken between the last release, or request, and the index found. Each answer of a full
   table moves the first free index, which CLUT_statistics shows, one further past the size; that is deliberate.
   Raises line 186 before RGBLUT_init, 191 when the first call finds no free index to reserve. After 191, whatever becomes
   of the raise, no index is reserved, and index 0 takes the dirty index's part in later calls.
   After an exception out of the debug output the index is free again, and the first free one; but the static phase is
   over. After a jump out of it the index is taken. Where the warning fails, the next answer of the full table warns. In
   a full table the first free index has moved in every case. */
int32_t CLUT_new_index(void);

/* Gives a dynamic index back, which keeps its colour. The dirty index stays as it is. Calls debug_break on entry.
   Raises line 240 before RGBLUT_init, 241 when the index is hard or free. Where the host returns from 241, the index is
   freed, whatever it was.
   A jump out of the debug output leaves the index free, but where it lies below the first free index no request finds
   it, until a lower one is given back. */
void CLUT_release_index(int32_t index);

/* Sets a colour. The callback is called before the colour is stored. A free index becomes hard, as by CLUT_alloc.
   Raises line 265 before RGBLUT_init, 266 when the index is not below the size, and what CLUT_alloc raises. */
void CLUT_set(int32_t index, int16_t red, int16_t green, int16_t blue);

/* As CLUT_set, with components from 0.0 to 1.0: each is multiplied by 255, truncated toward zero and cut to 16 bits.
   They are not clamped; a product outside 32 bits, or that is no number, is undefined. */
void CLUT_set_RGB(int32_t index, float red, float green, float blue);

/* Stores an index's colour through the three pointers: 255 each when the index is not below the size. Free indices have
   a colour too.
   Raises line 284 before RGBLUT_init. Where the debug output fails, the colour is stored. */
void CLUT_get(int32_t index, int16_t *red, int16_t *green, int16_t *blue) __attribute__((nonnull(2, 3, 4)));

/* Copies a colour. The callback is called after it is stored. Nothing is written to the debug output.
   Raises line 300 before RGBLUT_init, 302 when an index is not below the size, 303 when one is free. */
void CLUT_copy(int32_t destination, int32_t source);

/* Writes to the debug output the size, the first free index, the dirty index, and how many indices are free, hard and
   dynamic. The count leaves out index 0 and takes in the spare word after the last index, which is free; that is
   deliberate. Raises nothing. Linear. */
void CLUT_statistics(void);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#ifndef MOVA_NO_INLINE
#include <mova/clut/inline/colour_table.h>
#endif

#endif
