/* SPDX-License-Identifier: MIT */
/* A table by address: open addressing, probed one after the other, in memory of the system's. */
#ifndef MOVA_CHECKED_INTERNAL_ADDRESS_TABLE_H
#define MOVA_CHECKED_INTERNAL_ADDRESS_TABLE_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <sys/mman.h>

namespace mova::checked {

/* Zeroed memory of the system. Without any the checks cannot go on. */
inline void *map_zeroed(size_t bytes)
{
    void *const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        std::abort();
    return memory;
}

/* A slot has a field `address`, which is 0 where the slot is free, as it is at first. */
template <class Slot>
class address_table {
public:
    Slot *find(uintptr_t address)
    {
        if (!slots_)
            return nullptr;
        Slot &found = probe(address);
        return found.address != 0 ? &found : nullptr;
    }

    /* Where it is full, it keeps those of which `keeps(slot)` holds, and tells `drops(slot)` of the others. */
    Slot &insert(uintptr_t address, auto keeps, auto drops)
    {
        if (used_ >= limit())
            rebuild(keeps, drops);
        Slot &slot = probe(address);
        used_ += slot.address == 0;
        slot.address = address;
        return slot;
    }

    /* Takes a slot out, and moves up those behind that would not be found past the gap. */
    void erase(Slot &erased)
    {
        auto gap = static_cast<size_t>(&erased - slots_);
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

    void for_each(auto visit)
    {
        for (size_t at = 0; slots_ && at <= mask_; ++at) {
            if (slots_[at].address != 0)
                visit(slots_[at]);
        }
    }

    size_t bytes() const { return slots_ ? (mask_ + 1) * sizeof(Slot) : 0; }

private:
    /* Where the address is, or could be. */
    Slot &probe(uintptr_t address)
    {
        size_t at = home_of(address);
        while (slots_[at].address != 0 && slots_[at].address != address)
            at = (at + 1) & mask_;
        return slots_[at];
    }

    /* Addresses of one piece of 256 bytes lie together. */
    size_t home_of(uintptr_t address) const
    {
        const auto scattered = static_cast<uint64_t>(address >> 8) * 0x9E3779B97F4A7C15u;
        return (static_cast<size_t>(scattered >> 32 << 3) + (address >> 5) % 8) & mask_;
    }

    size_t limit() const { return slots_ ? (mask_ + 1) / 4 * 3 : 0; }

    /* Afterwards it has at least 1024 slots. Of more than these, those that must be kept take five sixteenths to ten. */
    void rebuild(auto keeps, auto drops)
    {
        size_t kept = 0;
        for_each([&](const Slot &each) { kept += keeps(each); });
        Slot *const old = slots_;
        const size_t old_size = old ? mask_ + 1 : 0;
        size_t size = 1024;
        while (size / 8 * 5 <= kept)
            size *= 2;
        slots_ = static_cast<Slot *>(map_zeroed(size * sizeof(Slot)));
        mask_ = size - 1;
        used_ = 0;
        for (size_t at = 0; at < old_size; ++at) {
            if (old[at].address == 0)
                continue;
            /* Of those that need not be kept there is room for some. */
            if (!keeps(old[at]) && kept + 1 >= size / 8 * 5) {
                drops(old[at]);
                continue;
            }
            kept += !keeps(old[at]);
            probe(old[at].address) = old[at];
            ++used_;
        }
        if (old)
            munmap(old, old_size * sizeof(Slot));
    }

    Slot *slots_ = nullptr;
    size_t mask_ = 0, used_ = 0;
};

} // namespace mova::checked

#endif
