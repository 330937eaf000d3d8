/* SPDX-License-Identifier: MIT */
/* What the checks know: of each address that a container made, whose it is, and of each container, where it was made.

       node, block        entry                            owner
       0x55d0c8   ---->   | address place owner state | -> | container  made  released  …  |
                                                                      |
                                              joined_to, where its nodes moved to another container

   Entries lie in tables by address; owners in one by number, where 0 is nobody. Whoever was seen released stays known
   until its address is used again or room is needed, so that a late use of it can be told from a stranger's. What was never
   seen is unknown, and nothing is said against it.

   The memory of both comes from the system alone. One lock guards all of it; it is taken only where there are threads. */
#ifndef MOVA_CHECKED_INTERNAL_REGISTRY_H
#define MOVA_CHECKED_INTERNAL_REGISTRY_H

#include <cstddef>
#include <cstdint>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

namespace mova::checked {

/* A place in the program: the address that a call returns to. */
using place = const void *;

/* A family of containers, as reports name it. */
struct family {
    const char *noun;      /* "list" */
    const char *full_noun; /* "generic list" */
    const char *member;    /* what a position of it is: "node" */
    bool is_chain;         /* nodes begin with their links, heads with the first and the last: chains.h */
    const family *records; /* the family whose records it has and whose functions take them; null for its own */
    /* Returns the number of the invariant that the container breaks, or 0; null where there are none to ask. */
    int (*broken_invariant)(const void *container);
    /* Returns how much work that is; null where it is as much as the container has blocks. */
    int64_t (*size)(const void *container);
    bool is_for_one_thread = false; /* all containers of the family together */
};

/* Whether a container of one may be given to the functions of the other. */
inline bool same_records(const family &a, const family &b)
{
    return (a.records ? a.records : &a) == (b.records ? b.records : &b);
}

/* What lies at an address: a container's head; a block that a container allocated, which is a node of it or its storage;
   an iterator that it allocated; or a record of the program's that is linked into a container. */
enum class kind : uint8_t { head, block, iterator, item };

using owner_number = uint32_t;

struct entry {
    place last_place; /* where it was made, or where it was released */
    owner_number owner;
    kind what;
    bool live;
    bool known; /* false where nothing is known of the address */
};

struct alignas(64) owner {
    const void *container;
    const family *of;
    place made, released;
    owner_number joined_to; /* the next free one, where it is free */
    uint32_t entries;       /* that name it, and owners that are joined to it */
    uint32_t calls;         /* since its invariants were asked */
    uint32_t edits;         /* those that end a walk through it */
    bool live;
    bool excused; /* its invariants are not asked: it was left by an exception, a jump or a raise */
    bool foreign; /* the program made its record by hand */
    uint32_t last_thread =
        0; /* that entered it, while there were several: twice its number, and 1 where it came to edit */
    place last_entered = {}; /* from where */
};

/* Holds the lock while it lives. What is declared below asks for it. */
class registry_lock {
public:
    registry_lock() : locked_(!has_one_thread())
    {
        if (locked_)
            lock();
    }
    ~registry_lock()
    {
        if (locked_)
            unlock();
    }
    bool has_threads() const { return locked_; }
    registry_lock(const registry_lock &) = delete;
    registry_lock &operator=(const registry_lock &) = delete;

private:
    static bool has_one_thread()
    {
#if __has_include(<sys/single_threaded.h>)
        return __libc_single_threaded;
#else
        return false;
#endif
    }
    static void lock();
    static void unlock();

    bool locked_;
};

/* Where entries and owners lie: registry.cpp says how. */
namespace table {

constexpr unsigned window_bits = 8;
constexpr unsigned word_bits = sizeof(void *) == 8 ? 3 : 2;
constexpr size_t window_slots = size_t{1} << (window_bits - word_bits);
constexpr size_t recent_windows = 64;

/* A piece of memory, and a slot for each word in it. */
struct window {
    uintptr_t tag; /* its address, less the bits within it, inverted: no address has the tag 0 */
    entry *slots;  /* null where there is none */
};

inline uintptr_t tag_of(uintptr_t address)
{
    return ~(address >> window_bits);
}

extern window recent[recent_windows];

entry *find_slowly(uintptr_t address);
entry *make_entry(uintptr_t address, size_t size);

/* Owners are in pieces, each twice as long as the one before, that never move. */
constexpr unsigned first_piece_bits = 8;
constexpr owner_number first_piece = owner_number{1} << first_piece_bits;
extern owner *pieces[24];

/* Numbers 0 to 255 are in piece 0, the next 512 in piece 1, and so on. */
inline unsigned piece_of(owner_number number)
{
    return 31 - first_piece_bits - static_cast<unsigned>(__builtin_clz(number + first_piece));
}

} // namespace table

namespace table {

/* The entry of an address in a window that was looked at not long ago, or null. */
inline entry *find_at_once(uintptr_t address)
{
    const uintptr_t tag = tag_of(address);
    const window &in = recent[tag % recent_windows];
    if (in.tag != tag || address % sizeof(void *) != 0)
        return nullptr;
    entry *const slot = &in.slots[(address >> word_bits) % window_slots];
    return slot->known ? slot : nullptr;
}

} // namespace table

/* The entry of an address, or null. It may move with the next insertion. */
inline entry *find(const void *address)
{
    entry *const found = table::find_at_once(reinterpret_cast<uintptr_t>(address));
    return found ? found : table::find_slowly(reinterpret_cast<uintptr_t>(address));
}

inline owner &owner_at(owner_number number)
{
    const unsigned piece = table::piece_of(number);
    return table::pieces[piece][number + table::first_piece - (table::first_piece << piece)];
}

/* Gives it back where nothing names it and its container is gone. */
void drop_if_unused(owner_number number);

/* Notes what lies at the address from now on, whatever lay there before, and how large it is where that is known. */
inline entry *book(const void *address, kind what, owner_number of, place where, size_t size = SIZE_MAX)
{
    entry *booked = table::find_at_once(reinterpret_cast<uintptr_t>(address));
    if (!booked)
        booked = table::make_entry(reinterpret_cast<uintptr_t>(address), size);
    const owner_number before = booked->owner;
    *booked = {where, of, what, true, true};
    if (of != 0)
        ++owner_at(of).entries;
    if (before != 0 && --owner_at(before).entries == 0)
        drop_if_unused(before);
    return booked;
}

/* Notes that it lies there no longer. Knows nothing of it where nobody had booked it. */
void mark_released(const void *address, place where);

/* The node at the address is of another owner from now on. */
void hand_over(const void *address, owner_number to);

/* Forgets the address. */
void forget(const void *address);

/* The number of a new owner without a container yet. */
owner_number new_owner(const family &of, place made);

/* The owner that the nodes of `number` are in now. */
inline owner_number resolved(owner_number number)
{
    while (number != 0 && owner_at(number).joined_to != 0)
        number = owner_at(number).joined_to;
    return number;
}

/* All nodes of `from` are of `to` from now on: in constant time, by naming `to` in the owner that they name. The container
   of `from` gets another owner, whose number is returned; 0 where it is gone. */
owner_number join(owner_number from, owner_number to);

struct tally {
    size_t containers, blocks;
};

/* How many containers and blocks live. */
tally count_live();

/* Calls `visit(address, entry, context)` for every live entry. */
void for_each_live(void (*visit)(const void *address, const entry &, void *context), void *context);

} // namespace mova::checked

#endif
