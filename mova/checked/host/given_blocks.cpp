/* SPDX-License-Identifier: MIT */
#include "given_blocks.h"

#include <mova/checked/internal/address_table.h>

#include <algorithm>
#include <utility>

#include <pthread.h>
#include <sys/mman.h>

/* The ordinary service. */
extern "C" {
void *mova_plain_MM_alloc_item(size_t size);
void mova_plain_MM_dealloc_item(void *item, size_t size);
}

constinit mova::checked::slab_table mova_checked_slabs = {};
constinit mova::checked::size_class mova_checked_classes[65] = {};

namespace mova::checked {

constinit std::mutex lock::mutex;

namespace {

/* A child of a process that forks must not find the lock held by a thread that it does not have. */
[[gnu::constructor]] void hold_over_forks()
{
    pthread_atfork([] { lock::mutex.lock(); }, [] { lock::mutex.unlock(); }, [] { lock::mutex.unlock(); });
}

uintptr_t number_of(const void *address)
{
    return reinterpret_cast<uintptr_t>(address);
}

/* ---- slabs ---- */

slab *slabs;
size_t slabs_taken;

/* Address space for slabs, mapped for some of them at once. Null where the system has none. */
char *take_slab_space()
{
    constexpr size_t at_once = 16;
    static char *fresh;
    static size_t left;
    if (left == 0) {
        constexpr size_t bytes = (at_once + 1) * slab_size;
        void *const mapped = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapped == MAP_FAILED)
            return nullptr;
        fresh = reinterpret_cast<char *>((number_of(mapped) + slab_size - 1) & ~uintptr_t{slab_size - 1});
        left = at_once;
    }
    --left;
    return std::exchange(fresh, fresh + slab_size);
}

/* From now on addresses in it are known as a slab's. */
void mark(const slab *marked)
{
    const size_t piece = static_cast<size_t>(uint64_t{number_of(marked)} >> 32);
    auto *marks = const_cast<uint8_t *>(mova_checked_slabs.marks[piece]);
    if (!marks) {
        marks = static_cast<uint8_t *>(map_zeroed(65536));
        __atomic_store_n(&mova_checked_slabs.marks[piece], marks, __ATOMIC_RELEASE);
    }
    __atomic_store_n(&marks[number_of(marked) / slab_size % 65536], uint8_t{1}, __ATOMIC_RELEASE);
}

slab *make_slab(size_t pitch)
{
    auto *const made = reinterpret_cast<slab *>(take_slab_space());
    if (!made)
        return nullptr;
    constexpr size_t around = sizeof(slab) + sizeof guard_word + granule;
    made->count = static_cast<uint32_t>((slab_size - around) / (pitch + sizeof(block_record)));
    made->pitch = static_cast<uint32_t>(pitch);
    made->reciprocal = static_cast<uint32_t>(((uint64_t{1} << 32) + pitch - 1) / pitch);
    const size_t records_end = sizeof(slab) + made->count * sizeof(block_record);
    made->first = static_cast<uint32_t>((records_end + sizeof guard_word + granule - 1) & ~(granule - 1));
    write_shared_guard(made->block(0) - sizeof guard_word);
    made->next = std::exchange(slabs, made);
    ++slabs_taken;
    mark(made);
    return made;
}

/* ---- large blocks ---- */

struct large_slot {
    uintptr_t address; /* of the program's bytes */
};

address_table<large_slot> large_blocks;

given large_block(uintptr_t address)
{
    auto *const bytes = reinterpret_cast<char *>(address);
    return {bytes, &reinterpret_cast<large_head *>(bytes - before_large)->record};
}

/* A multiple of 16, so that every block is aligned to that. */
size_t whole_size(size_t size)
{
    return (before_large + size + sizeof guard_word + 15) & ~size_t{15};
}

given find_large(const void *bytes)
{
    return large_blocks.find(number_of(bytes)) ? large_block(number_of(bytes)) : given();
}

} // namespace

/* So many blocks of a size are kept, or what takes so many bytes of them. */
constexpr size_t most_kept = 8192, most_kept_bytes = size_t{512} << 10;

bool begin_slab(size_class &of, size_t pitch)
{
    slab *const made = make_slab(pitch);
    if (!made)
        return false;
    if (!of.end)
        of.end = &of.oldest;
    of.newest = made;
    of.used = 0;
    of.most = made->count;
    of.most_kept = static_cast<uint32_t>(std::min(most_kept, most_kept_bytes / pitch));
    return true;
}

given find_elsewhere(const void *bytes)
{
    const lock held;
    return find_large(bytes);
}

given take_large(size_t size, const void *made)
{
    const bool fits = size <= PTRDIFF_MAX - before_large - sizeof guard_word - 15;
    auto *const whole = static_cast<char *>(mova_plain_MM_alloc_item(fits ? whole_size(size) : size));
    if (!whole)
        return {};
    const given taken = large_block(number_of(whole) + before_large);
    *taken.record() = {};
    taken.record()->noted.of_host = given::large_mark;
    taken.begin(size, made);
    const lock held;
    large_blocks.insert(
        number_of(taken.bytes()), [](const large_slot &) { return true; }, [](const large_slot &) {});
    return taken;
}

void give_back_large(given block)
{
    if (mova_checked_note_gone)
        mova_checked_note_gone(block.bytes());
    const size_t size = whole_size(block.size());
    {
        const lock held;
        large_blocks.erase(*large_blocks.find(number_of(block.bytes())));
    }
    mova_plain_MM_dealloc_item(block.bytes() - before_large, size);
}

void for_each_block(block_state state, void (*visit)(given, void *context), void *context)
{
    const auto visit_those = [=](given each) {
        if (each.state() == state)
            visit(each, context);
    };
    for (slab *each = slabs; each; each = each->next) {
        for (uint32_t i = 0; i < each->count; ++i)
            visit_those(given(each->block(i), &each->records()[i]));
    }
    large_blocks.for_each([&](const large_slot &each) { visit_those(large_block(each.address)); });
}

size_t slab_bytes()
{
    return slabs_taken * slab_size;
}

size_t large_table_bytes()
{
    return large_blocks.bytes();
}

size_t bytes_around(given block)
{
    return block.is_large() ? whole_size(block.size()) - block.size()
                            : sizeof(block_record) + room_of(block.bytes()) + sizeof guard_word - block.size();
}

} // namespace mova::checked

mova::checked::entry *mova_checked_find_large(uintptr_t address)
{
    using namespace mova::checked;
    const lock held;
    const given found = find_large(reinterpret_cast<const void *>(address));
    return found ? &found.record()->noted : nullptr;
}
