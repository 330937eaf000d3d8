/* SPDX-License-Identifier: MIT */
#include "registry.h"

#include <pthread.h>
#include <sys/mman.h>

#include <cstdlib>
#include <mutex>
#include <utility>

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

/* ---- owners ---- */

using table::first_piece;
using table::piece_of;
using table::pieces;

class owner_table {
public:
    owner_number take()
    {
        if (free_ != 0)
            return std::exchange(free_, owner_at(free_).joined_to);
        const unsigned piece = piece_of(used_);
        if (!pieces[piece])
            pieces[piece] = static_cast<owner *>(map((first_piece << piece) * sizeof(owner)));
        return used_++;
    }

    void give_back(owner_number number)
    {
        owner_at(number).joined_to = free_;
        free_ = number;
    }

private:
    owner_number used_ = 1, free_ = 0;
};

/* ---- entries of small blocks ----

   Containers allocate their nodes in rows. So memory is seen in windows of 256 bytes, and a window in which there is a small
   block has a slot for each word of it: for nodes of three words that is 48 bytes a node, and the next node's entry lies
   beside this one's.

       window 0x7f…d8200:   | slot of 0x7f…d820000 | slot of …08 | slot of …10 | slot of …18 | …  */

using table::recent;
using table::recent_windows;
using table::tag_of;
using table::window;
using table::window_bits;
using table::window_slots;
using table::word_bits;

constexpr size_t largest_small_block = 5 * sizeof(void *);

constexpr uintptr_t scattered(uintptr_t number)
{
    return static_cast<uintptr_t>((static_cast<uint64_t>(number) * 0x9E3779B97F4A7C15u) >> 32);
}

class window_table {
public:
    /* The slot of a word, or null where its window has none. */
    entry *slot_of(uintptr_t address)
    {
        const uintptr_t tag = tag_of(address);
        const window &known = recent[tag % recent_windows];
        return known.tag == tag ? slot_in(known, address) : look_up(tag, address);
    }

    /* As slot_of, and makes the window. */
    entry *make_slot(uintptr_t address)
    {
        if (entry *const made = slot_of(address))
            return made;
        if (2 * used_ >= size_)
            grow();
        window &free = probe(tag_of(address));
        free = {tag_of(address), take_slots()};
        ++used_;
        return slot_in(free, address);
    }

    template <class Visit>
    void for_each(Visit visit)
    {
        for (size_t i = 0; i < size_; ++i) {
            for (size_t word = 0; windows_[i].slots && word < window_slots; ++word) {
                if (windows_[i].slots[word].known)
                    visit((~windows_[i].tag << window_bits) + (word << word_bits), windows_[i].slots[word]);
            }
        }
    }

private:
    static entry *slot_in(const window &of, uintptr_t address)
    {
        return &of.slots[(address >> word_bits) % window_slots];
    }

    /* Eight windows in a row lie together. */
    size_t home_of(uintptr_t tag) const { return ((scattered(tag >> 3) << 3) + tag % 8) & (size_ - 1); }

    window &probe(uintptr_t tag)
    {
        size_t i = home_of(tag);
        while (windows_[i].slots && windows_[i].tag != tag)
            i = (i + 1) & (size_ - 1);
        return windows_[i];
    }

    entry *look_up(uintptr_t tag, uintptr_t address)
    {
        if (size_ == 0)
            return nullptr;
        const window &found = probe(tag);
        if (!found.slots)
            return nullptr;
        recent[tag % recent_windows] = found;
        return slot_in(found, address);
    }

    void grow()
    {
        window *const old = windows_;
        const size_t old_size = size_;
        size_ = old_size ? 2 * old_size : 1024;
        windows_ = static_cast<window *>(map(size_ * sizeof(window)));
        for (size_t i = 0; i < old_size; ++i) {
            if (old[i].slots)
                probe(old[i].tag) = old[i];
        }
        if (old)
            munmap(old, old_size * sizeof(window));
    }

    /* Slots of many windows are mapped at once. */
    entry *take_slots()
    {
        constexpr size_t windows_at_once = 1024;
        if (left_ == 0) {
            fresh_ = static_cast<entry *>(map(windows_at_once * window_slots * sizeof(entry)));
            left_ = windows_at_once;
        }
        --left_;
        return std::exchange(fresh_, fresh_ + window_slots);
    }

    window *windows_ = nullptr;
    size_t size_ = 0, used_ = 0;
    entry *fresh_ = nullptr;
    size_t left_ = 0;
};

/* ---- entries of all else: open addressing, probed one after the other ---- */

class entry_table {
public:
    entry *find(uintptr_t address)
    {
        if (!slots_)
            return nullptr;
        slot &found = probe(address);
        return found.address != 0 ? &found.noted : nullptr;
    }

    entry *insert(uintptr_t address)
    {
        if (used_ >= limit_)
            rebuild();
        slot &place = probe(address);
        used_ += place.address == 0;
        place.address = address;
        return &place.noted;
    }

    /* Takes the entry out, and moves up those behind that would not be found past the gap. */
    void erase(uintptr_t address)
    {
        size_t gap = static_cast<size_t>(&probe(address) - slots_);
        for (size_t at = (gap + 1) & mask_; slots_[at].address != 0; at = (at + 1) & mask_) {
            const size_t home = home_of(slots_[at].address);
            if (((at - home) & mask_) >= ((at - gap) & mask_)) {
                slots_[gap] = slots_[at];
                gap = at;
            }
        }
        slots_[gap] = {};
        --used_;
    }

    template <class Visit>
    void for_each(Visit visit)
    {
        for (size_t at = 0; slots_ && at <= mask_; ++at) {
            if (slots_[at].address != 0)
                visit(slots_[at].address, slots_[at].noted);
        }
    }

private:
    struct slot {
        uintptr_t address;
        entry noted;
    };

    /* Where the address is, or could be. */
    slot &probe(uintptr_t address)
    {
        size_t at = home_of(address);
        while (slots_[at].address != 0 && slots_[at].address != address)
            at = (at + 1) & mask_;
        return slots_[at];
    }

    size_t home_of(uintptr_t address) const { return scattered(address >> word_bits) & mask_; }

    /* The live ones move to a table of which they take a quarter to a half, and of the released ones as many as leave a
       third free. */
    void rebuild();

    slot *slots_ = nullptr;
    size_t mask_ = 0, used_ = 0, limit_ = 0;
};

owner_table owners;
window_table windows;
entry_table entries;
std::mutex mutex;

bool is_word(uintptr_t address)
{
    return address % (uintptr_t{1} << word_bits) == 0;
}

/* What named the owner does no longer. */
void unname(owner_number number)
{
    if (number != 0) {
        --owner_at(number).entries;
        drop_if_unused(number);
    }
}

void entry_table::rebuild()
{
    size_t live = 0;
    for_each([&live](uintptr_t, const entry &known) { live += known.live; });
    size_t size = 1024;
    while (size / 2 < live)
        size *= 2;
    slot *const old = slots_;
    const size_t old_size = mask_ + 1;
    size_t released_kept = size * 5 / 8 - live;
    slots_ = static_cast<slot *>(map(size * sizeof(slot)));
    mask_ = size - 1;
    limit_ = size - size / 4;
    used_ = 0;
    if (!old)
        return;
    for (size_t at = 0; at < old_size; ++at) {
        const slot &moved = old[at];
        if (moved.address == 0)
            continue;
        if (!moved.noted.live && released_kept == 0) {
            unname(moved.noted.owner);
            continue;
        }
        released_kept -= !moved.noted.live;
        probe(moved.address) = moved;
        ++used_;
    }
    munmap(old, old_size * sizeof(slot));
}

} // namespace

namespace table {

window recent[recent_windows];
owner *pieces[24];

entry *find_slowly(uintptr_t address)
{
    if (entry *const small = is_word(address) ? windows.slot_of(address) : nullptr; small && small->known)
        return small;
    return entries.find(address);
}

/* An address has an entry in one of the tables only. */
entry *make_entry(uintptr_t address, size_t size)
{
    entry *made = is_word(address) ? windows.slot_of(address) : nullptr;
    if (!made && size <= largest_small_block && is_word(address))
        made = windows.make_slot(address);
    if (!made)
        return entries.insert(address);
    if (!made->known)
        forget(reinterpret_cast<const void *>(address));
    return made;
}

} // namespace table

/* A child of a process that forks must not find the lock held by a thread that it does not have, nor what it guards half changed.
   It is taken before the host's locks, whose library was loaded before. */
[[gnu::constructor]] static void hold_over_forks()
{
    pthread_atfork([] { mutex.lock(); }, [] { mutex.unlock(); }, [] { mutex.unlock(); });
}

void registry_lock::lock()
{
    mutex.lock();
}

void registry_lock::unlock()
{
    mutex.unlock();
}

void mark_released(const void *address, place where)
{
    entry *const released = find(address);
    if (!released || !released->live)
        return;
    released->live = false;
    released->last_place = where;
    if (released->what == kind::head && released->owner != 0) {
        owner_at(released->owner).live = false;
        owner_at(released->owner).released = where;
    }
}

void hand_over(const void *address, owner_number to)
{
    if (const entry *const handed = find(address))
        book(address, kind::block, to, handed->last_place);
}

void forget(const void *address)
{
    entry *const known = find(address);
    if (!known)
        return;
    const owner_number before = known->owner;
    const auto number = reinterpret_cast<uintptr_t>(address);
    if (known == entries.find(number))
        entries.erase(number);
    else
        *known = {};
    unname(before);
}

owner_number new_owner(const family &of, place made)
{
    const owner_number number = owners.take();
    owner_at(number) = {nullptr, &of, made, nullptr, 0, 0, 0, 0, true, false, false};
    return number;
}

void drop_if_unused(owner_number number)
{
    owner &unused = owner_at(number);
    if (unused.entries != 0)
        return;
    const owner_number next = unused.joined_to;
    owners.give_back(number);
    unname(next);
}

owner_number join(owner_number from, owner_number to)
{
    owner &old = owner_at(from);
    owner_number fresh = 0;
    if (entry *const head = find(old.container); head && head->live && head->owner == from) {
        fresh = new_owner(*old.of, old.made);
        owner_at(fresh) = {old.container, old.of, old.made,    nullptr,    0, 1, 0,
                           old.edits,     true,   old.excused, old.foreign};
        head->owner = fresh;
        --old.entries;
    }
    old.joined_to = to;
    ++owner_at(to).entries;
    drop_if_unused(from);
    return fresh;
}

void for_each_live(void (*visit)(const void *address, const entry &, void *context), void *context)
{
    const auto visit_live = [=](uintptr_t address, const entry &known) {
        if (known.live)
            visit(reinterpret_cast<const void *>(address), known, context);
    };
    windows.for_each(visit_live);
    entries.for_each(visit_live);
}

tally count_live()
{
    tally count = {};
    for_each_live(
        [](const void *, const entry &known, void *counted) {
            auto *const to = static_cast<tally *>(counted);
            ++(known.what == kind::head ? to->containers : to->blocks);
        },
        &count);
    return count;
}

} // namespace mova::checked
