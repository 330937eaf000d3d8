/* SPDX-License-Identifier: MIT */
#include "registry.h"

#include "address_table.h"

#include <mutex>
#include <utility>

#include <pthread.h>

namespace mova::checked {

namespace {

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
            pieces[piece] = static_cast<owner *>(map_zeroed((first_piece << piece) * sizeof(owner)));
        return used_++;
    }

    void give_back(owner_number number)
    {
        owner_at(number).joined_to = free_;
        free_ = number;
    }

    size_t bytes() const { return used_ * sizeof(owner); }

private:
    owner_number used_ = 1, free_ = 0;
};

struct stray {
    uintptr_t address;
    entry noted;
};

owner_table owners;
address_table<stray> entries;
std::mutex mutex;

/* What named the owner does no longer. */
void unname(owner_number number)
{
    if (number != 0) {
        --owner_at(number).entries;
        drop_if_unused(number);
    }
}

/* Where it is full, of the released ones some go. */
entry &insert(uintptr_t address)
{
    return entries
        .insert(
            address, [](const stray &each) { return each.noted.live; },
            [](const stray &each) { unname(each.noted.owner); })
        .noted;
}

entry *find_large(uintptr_t address)
{
    return mova_checked_find_large ? mova_checked_find_large(address) : nullptr;
}

} // namespace

namespace table {

owner *pieces[18];

/* At first, of an address that is no container. */
constinit entry nothing_found = {};
constinit found_block last_found = {&nothing_found, &nothing_found};

entry *find_first(const void *address)
{
    block_record *const small = small_record(reinterpret_cast<uintptr_t>(address));
    if (small)
        last_found = {address, &small->noted};
    return find(address);
}

entry *find_elsewhere(uintptr_t address)
{
    if (stray *const found = entries.find(address))
        return &found->noted;
    entry *const large = find_large(address);
    return large && large->known ? large : nullptr;
}

/* An address has one entry that is known. */
entry *make_elsewhere(uintptr_t address)
{
    entry *const large = find_large(address);
    if (!large)
        return &insert(address);
    if (!large->known)
        forget(reinterpret_cast<const void *>(address));
    return large;
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
    const owner_number before = std::exchange(known->owner, 0);
    known->known = known->live = false;
    const auto number = reinterpret_cast<uintptr_t>(address);
    if (!table::small_record(number)) {
        if (stray *const found = entries.find(number))
            entries.erase(*found);
    }
    unname(before);
}

void keep_entry_of_gone(const void *address)
{
    const auto number = reinterpret_cast<uintptr_t>(address);
    entry *const gone = find_large(number);
    if (gone && gone->known)
        insert(number) = *gone;
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

void for_each_live_elsewhere(void (*visit)(const void *address, const entry &, void *context), void *context)
{
    entries.for_each([=](const stray &each) {
        if (each.noted.live)
            visit(reinterpret_cast<const void *>(each.address), each.noted, context);
    });
}

size_t registry_bytes()
{
    return entries.bytes() + owners.bytes();
}

} // namespace mova::checked
