/* SPDX-License-Identifier: MIT */
#include "registry.h"

#include <sys/mman.h>

#include <cstdlib>
#include <mutex>
#include <utility>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#define HAS_ONE_THREAD __libc_single_threaded
#else
#define HAS_ONE_THREAD false
#endif

namespace mova::checked {

namespace {

/* Zeroed memory of the system. Without any the checks cannot go on. */
void *map(size_t bytes)
{
    void *memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        std::abort();
    return memory;
}

/* ---- owners: an array that never moves, in pieces, each twice as long as the one before ---- */

constexpr unsigned first_piece_bits = 8;
constexpr unsigned pieces = 24;

class owner_table {
public:
    owner &at(owner_number number)
    {
        const unsigned piece = piece_of(number);
        return pieces_[piece][number + first_ - (first_ << piece)];
    }

    owner_number take()
    {
        if (free_ != 0)
            return std::exchange(free_, at(free_).joined_to);
        const unsigned piece = piece_of(used_);
        if (!pieces_[piece])
            pieces_[piece] = static_cast<owner *>(map((first_ << piece) * sizeof(owner)));
        return used_++;
    }

    void give_back(owner_number number)
    {
        at(number).joined_to = free_;
        free_ = number;
    }

private:
    /* Numbers 0 to 255 are in piece 0, the next 512 in piece 1, and so on. */
    static unsigned piece_of(owner_number number)
    {
        return 31 - first_piece_bits - static_cast<unsigned>(__builtin_clz(number + first_));
    }

    static constexpr owner_number first_ = 1u << first_piece_bits;

    owner *pieces_[pieces] = {};
    owner_number used_ = 1, free_ = 0;
};

/* ---- entries: open addressing, probed one after the other ---- */

class entry_table {
public:
    /* Where the address is, or could be. */
    entry *probe(uintptr_t address)
    {
        size_t slot = home_of(address);
        while (slots_[slot].address != 0 && slots_[slot].address != address)
            slot = (slot + 1) & mask_;
        return &slots_[slot];
    }

    entry *find(uintptr_t address)
    {
        if (!slots_)
            return nullptr;
        entry *found = probe(address);
        return found->address != 0 ? found : nullptr;
    }

    entry *insert(uintptr_t address)
    {
        if (used_ >= limit_)
            rebuild();
        entry *place = probe(address);
        used_ += place->address == 0;
        return place;
    }

    /* Takes the entry out, and moves up those behind that would not be found past the gap. */
    void erase(entry *out)
    {
        size_t gap = static_cast<size_t>(out - slots_);
        for (size_t slot = (gap + 1) & mask_; slots_[slot].address != 0; slot = (slot + 1) & mask_) {
            const size_t home = home_of(slots_[slot].address);
            if (((slot - home) & mask_) >= ((slot - gap) & mask_)) {
                slots_[gap] = slots_[slot];
                gap = slot;
            }
        }
        slots_[gap] = {};
        --used_;
    }

    size_t live = 0;

    template <class Visit>
    void for_each(Visit visit)
    {
        for (size_t slot = 0; slots_ && slot <= mask_; ++slot) {
            if (slots_[slot].address != 0)
                visit(slots_[slot]);
        }
    }

private:
    /* Blocks of one window of memory lie close together in the table too, as far as there is room: containers go through
       their nodes as they lie in memory. */
    size_t home_of(uintptr_t address) const
    {
        constexpr unsigned window_bits = 8;
        constexpr unsigned grain_bits = 4;
        const uint64_t window = (address >> window_bits) * 0x9E3779B97F4A7C15u;
        return (static_cast<size_t>(window >> 32) + ((address >> grain_bits) & 15)) & mask_;
    }

    /* The live ones move to a table of which they take a quarter to a half, and of the released ones as many as leave a
       third free. */
    void rebuild();

    entry *slots_ = nullptr;
    size_t mask_ = 0, used_ = 0, limit_ = 0;
};

owner_table owners;
entry_table entries;
std::mutex mutex;

/* What named the owner does no longer. */
void unname(owner_number number)
{
    if (number != 0) {
        --owners.at(number).entries;
        drop_if_unused(number);
    }
}

void entry_table::rebuild()
{
    size_t size = 1024;
    while (size / 2 < live)
        size *= 2;
    entry *const old = slots_;
    const size_t old_size = mask_ + 1;
    size_t released_kept = size * 5 / 8 - live;
    slots_ = static_cast<entry *>(map(size * sizeof(entry)));
    mask_ = size - 1;
    limit_ = size - size / 4;
    used_ = 0;
    if (!old)
        return;
    for (size_t slot = 0; slot < old_size; ++slot) {
        const entry &moved = old[slot];
        if (moved.address == 0)
            continue;
        if (!moved.live && released_kept == 0) {
            unname(moved.owner);
            continue;
        }
        released_kept -= !moved.live;
        *probe(moved.address) = moved;
        ++used_;
    }
    munmap(old, old_size * sizeof(entry));
}

} // namespace

registry_lock::registry_lock() : locked_(!HAS_ONE_THREAD)
{
    if (locked_)
        mutex.lock();
}

registry_lock::~registry_lock()
{
    if (locked_)
        mutex.unlock();
}

entry *find(const void *address)
{
    return entries.find(reinterpret_cast<uintptr_t>(address));
}

entry *book(const void *address, kind what, owner_number of, place where)
{
    entry *booked = entries.insert(reinterpret_cast<uintptr_t>(address));
    const owner_number before = booked->owner;
    entries.live += !booked->live;
    *booked = {reinterpret_cast<uintptr_t>(address), where, of, what, true};
    if (of != 0)
        ++owners.at(of).entries;
    unname(before);
    return booked;
}

void mark_released(const void *address, place where)
{
    entry *const released = find(address);
    if (!released || !released->live)
        return;
    released->live = false;
    released->last_place = where;
    --entries.live;
    if (released->what == kind::head && released->owner != 0) {
        owners.at(released->owner).live = false;
        owners.at(released->owner).released = where;
    }
}

void hand_over(const void *address, owner_number to)
{
    if (entry *const handed = find(address)) {
        ++owners.at(to).entries;
        unname(std::exchange(handed->owner, to));
    }
}

void forget(const void *address)
{
    entry *const known = find(address);
    if (!known)
        return;
    entries.live -= known->live;
    const owner_number before = known->owner;
    entries.erase(known);
    unname(before);
}

owner &owner_at(owner_number number)
{
    return owners.at(number);
}

owner_number new_owner(const family &of, place made)
{
    const owner_number number = owners.take();
    owners.at(number) = {nullptr, &of, made, nullptr, 0, 0, 0, 0, true, false, false};
    return number;
}

void drop_if_unused(owner_number number)
{
    owner &unused = owners.at(number);
    if (unused.entries != 0)
        return;
    const owner_number next = unused.joined_to;
    owners.give_back(number);
    unname(next);
}

owner_number resolved(owner_number number)
{
    while (number != 0 && owners.at(number).joined_to != 0)
        number = owners.at(number).joined_to;
    return number;
}

owner_number join(owner_number from, owner_number to)
{
    owner &old = owners.at(from);
    owner_number fresh = 0;
    if (entry *const head = find(old.container); head && head->live && head->owner == from) {
        fresh = new_owner(*old.of, old.made);
        owners.at(fresh) = {old.container, old.of, old.made,    nullptr,    0, 1, 0,
                            old.edits,     true,   old.excused, old.foreign};
        head->owner = fresh;
        --old.entries;
    }
    old.joined_to = to;
    ++owners.at(to).entries;
    drop_if_unused(from);
    return fresh;
}

tally count_live()
{
    tally count = {};
    entries.for_each([&count](const entry &known) {
        if (known.live)
            ++(known.what == kind::head ? count.containers : count.blocks);
    });
    return count;
}

void for_each_live(void (*visit)(const entry &, void *context), void *context)
{
    entries.for_each([=](const entry &known) {
        if (known.live)
            visit(known, context);
    });
}

} // namespace mova::checked
