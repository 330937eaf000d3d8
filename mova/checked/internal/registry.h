/* SPDX-License-Identifier: MIT */
/* What the checks know: of each address that a container made, whose it is, and of each container, where it was made.

       node, block        entry                            owner
       0x55d0c8   ---->   | address place owner state | -> | container  made  released  …  |
                                                                      |
                                              joined_to, where its nodes moved to another container

   Entries lie by address: of blocks that the checked host gave, in its own records (records.h); of all else in a table.
   Owners lie in one by number, where 0 is nobody. Whoever was seen released stays known until its address is used again or
   room is needed, so that a late use of it can be told from a stranger's. What was never seen is unknown, and nothing is
   said against it.

   The memory of both comes from the system alone. One lock guards all of it; it is taken only where there are threads. */
#ifndef MOVA_CHECKED_INTERNAL_REGISTRY_H
#define MOVA_CHECKED_INTERNAL_REGISTRY_H

#include "blocks.h"

namespace mova::checked {

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
    registry_lock() : locked_(!single_threaded())
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
    static void lock();
    static void unlock();

    bool locked_;
};

/* Where entries and owners lie: registry.cpp says how. */
namespace table {

/* Of an address where no small block of the checked host begins. */
entry *find_elsewhere(uintptr_t address);
entry *make_elsewhere(uintptr_t address);

/* The record of a small block of the checked host, or null. */
inline block_record *small_record(uintptr_t address)
{
    return &mova_checked_slabs ? record_of(mova_checked_slabs, address) : nullptr;
}

/* Owners are in pieces, each twice as long as the one before, that never move: numbers 0 to 16383 are in piece 0, the next
   32768 in piece 1, and so on. */
constexpr unsigned first_piece_bits = 14;
constexpr owner_number first_piece = owner_number{1} << first_piece_bits;
extern owner *pieces[18];

inline unsigned piece_of(owner_number number)
{
    return 31 - first_piece_bits - static_cast<unsigned>(__builtin_clz(number + first_piece));
}

} // namespace table

/* The entry of an address, or null. It may move with the next insertion. */
inline entry *find(const void *address)
{
    const auto number = reinterpret_cast<uintptr_t>(address);
    block_record *const small = table::small_record(number);
    if (!small)
        return table::find_elsewhere(number);
    return small->noted.known ? &small->noted : nullptr;
}

namespace table {

/* The small block that find_again() was asked for last: its record stays where it is. */
struct found_block {
    const void *address;
    entry *noted;
};
extern found_block last_found;
entry *find_first(const void *address);

} // namespace table

/* As find(), of an address that the calls in a row ask for: their container, or an iterator's end. */
__attribute__((always_inline)) inline entry *find_again(const void *address)
{
    const table::found_block &last = table::last_found;
    return address == last.address && last.noted->known ? last.noted : table::find_first(address);
}

inline owner &owner_at(owner_number number)
{
    if (number < table::first_piece) [[likely]]
        return table::pieces[0][number];
    const unsigned piece = table::piece_of(number);
    return table::pieces[piece][number + table::first_piece - (table::first_piece << piece)];
}

/* Gives it back where nothing names it and its container is gone. */
void drop_if_unused(owner_number number);

/* An entry names another owner from now on. */
inline void change_owner(owner_number before, owner_number of)
{
    if (of != 0)
        ++owner_at(of).entries;
    if (before != 0 && --owner_at(before).entries == 0)
        drop_if_unused(before);
}

/* Notes in an address's entry what lies there from now on, whatever lay there before. */
inline void enter(entry &noted, kind what, owner_number of, place where)
{
    const owner_number before = noted.owner;
    noted.last_place = where;
    noted.owner = of;
    noted.what = what;
    noted.live = true;
    noted.known = true;
    change_owner(before, of);
}

/* As enter(), of an address. */
inline entry *book(const void *address, kind what, owner_number of, place where)
{
    const auto number = reinterpret_cast<uintptr_t>(address);
    block_record *const small = table::small_record(number);
    entry *const booked = small ? &small->noted : table::make_elsewhere(number);
    enter(*booked, what, of, where);
    return booked;
}

/* Notes that it lies there no longer. Knows nothing of it where nobody had booked it. */
inline void mark_released(entry &released, place where)
{
    if (!released.live)
        return;
    released.live = false;
    released.last_place = where;
    if (released.what == kind::head && released.owner != 0) {
        owner_at(released.owner).live = false;
        owner_at(released.owner).released = where;
    }
}

inline void mark_released(const void *address, place where)
{
    if (entry *const released = find(address))
        mark_released(*released, where);
}

/* The node at the address is of another owner from now on. */
void hand_over(const void *address, owner_number to);

/* Forgets the address. */
void forget(const void *address);

/* The large block of the checked host that begins there goes back to the system, or to the ordinary service: what was noted
   of it is kept elsewhere. */
void keep_entry_of_gone(const void *address);

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

/* Calls `visit(address, entry, context)` for every live entry but those of the checked host's blocks. */
void for_each_live_elsewhere(void (*visit)(const void *address, const entry &, void *context), void *context);

/* How many bytes the entries and owners take up, but for those of the checked host. */
size_t registry_bytes();

} // namespace mova::checked

#endif
