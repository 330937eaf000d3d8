/* SPDX-License-Identifier: MIT */
/* What the containers ask of their host, on its way there. Their objects are linked with these names in place of the
   services': each passes the call on as it is, and notes what it means. The service may be the default host's, checked or not,
   or the program's own. */
#include "blocks.h"
#include "call.h"
#include "small_blocks.h"

#include <mova/frame/host.h>

#include <atomic>

#include <dlfcn.h>

namespace mova::checked {

namespace {

/* A block that the innermost call allocated. */
void note_allocation(given_block block)
{
    if (!block.bytes)
        return;
    const running_call *const caller = innermost_call();
    const owner_number of = caller ? caller->blocks_of : 0;
    const place where = caller ? caller->lasting : nullptr;
    const registry_lock lock;
    if (block.noted)
        enter(*block.noted, kind::block, of, where);
    else
        book(block.bytes, kind::block, of, where);
}

inline place place_of_call()
{
    const running_call *const caller = innermost_call();
    return caller ? caller->lasting : nullptr;
}

/* Which host serves: the checked one is told where in the program each call came from. */
enum class service : uint8_t { unknown, checked, other };
constinit std::atomic<service> serving = service::unknown;

bool has_checked_host()
{
    if (serving.load(std::memory_order_relaxed) == service::unknown) {
        const bool is_checked = mova_checked_is_service && mova_checked_is_service(&MM_alloc_item);
        serving.store(is_checked ? service::checked : service::other, std::memory_order_relaxed);
    }
    return serving.load(std::memory_order_relaxed) == service::checked;
}

/* Whether blocks of that size are taken and released here, without a call of the host's. */
inline bool does_it_itself(size_t size)
{
    return serving.load(std::memory_order_relaxed) == service::checked && size <= largest_small && single_threaded();
}

constexpr uint32_t live_node(size_t slack)
{
    return state_word(kind::block, true, true, host_byte(block_state::live, slack));
}

constexpr uint32_t kept_node(size_t slack)
{
    return state_word(kind::block, false, true, host_byte(block_state::kept, slack));
}

/* A small block for the innermost call, or null where it takes more than a few steps. */
inline void *take_quickly(size_t size)
{
    const running_call *const caller = innermost_call();
    size_class &from = class_for(size);
    const size_t room = pitch_for(size) - sizeof guard_word;
    if (!caller || !is_ready(from) || (from.kept > from.most_kept && !is_room_untouched(block_of(from.oldest), room)))
        return nullptr;
    const small_block taken = take_next(from);
    const size_t slack = guard_behind(taken.bytes, size, room);
    entry &noted = taken.record->noted;
    const owner_number of = caller->blocks_of, before = noted.owner;
    taken.record->made = noted.last_place = caller->lasting;
    noted.owner = of;
    set_state_word(noted, live_node(slack));
    change_owner(before, of);
    return taken.bytes;
}

/* Releases a small block that is a node of a container's and has nothing wrong about it. Returns false where it is not. */
inline bool release_quickly(void *item, size_t size)
{
    const running_call *const caller = innermost_call();
    const auto address = reinterpret_cast<uintptr_t>(item);
    if (!caller || !is_in_slab(mova_checked_slabs, address))
        return false;
    block_record *const record = record_in(slab_around(address), address);
    auto *const bytes = static_cast<char *>(item);
    const size_t room = room_of(bytes), slack = room - size;
    if (!record || slack >= granule || state_word(record->noted) != live_node(slack) ||
        !is_shared_guard(bytes - sizeof guard_word) || !is_whole_behind_small(bytes, size, room))
        return false;
    record->noted.last_place = caller->lasting;
    set_state_word(record->noted, kept_node(slack));
    keep_small({bytes, record}, room);
    return true;
}

[[gnu::noinline]] void *allocate(size_t size)
{
    const given_block given =
        has_checked_host() ? mova_checked_allocate(size, place_of_call()) : given_block{MM_alloc_item(size), nullptr};
    note_allocation(given);
    return given.bytes;
}

/* It is noted before the service has the block: other threads may be given it at once. */
[[gnu::noinline]] void release(void *item, size_t size)
{
    const place where = place_of_call();
    {
        const registry_lock lock;
        mark_released(item, where);
    }
    if (has_checked_host())
        mova_checked_release(item, size, where);
    else
        MM_dealloc_item(item, size);
}

} // namespace

bool sees_every_block()
{
    return has_checked_host();
}

bool has_checked_pools()
{
    static const bool has = mova_checked_is_pool_service && mova_checked_is_pool_service(&mb_get);
    return has;
}

} // namespace mova::checked

using namespace mova::checked;

extern "C" {

void *mova_checked_MM_alloc_item(size_t size);
void mova_checked_MM_dealloc_item(void *item, size_t size);
void *mova_checked_MM_realloc_item(void *item, size_t old_size, size_t new_size);
void mova_checked_EX_raise_exception_line(const char *module, int32_t line, int32_t code);

void *mova_checked_MM_alloc_item(size_t size)
{
    if (does_it_itself(size)) [[likely]] {
        if (void *const taken = take_quickly(size))
            return taken;
    }
    return allocate(size);
}

void mova_checked_MM_dealloc_item(void *item, size_t size)
{
    if (!does_it_itself(size) || !release_quickly(item, size)) [[unlikely]]
        release(item, size);
}

/* Where it fails, the old block is as it was. */
void *mova_checked_MM_realloc_item(void *item, size_t old_size, size_t new_size)
{
    const given_block given = has_checked_host() ? mova_checked_reallocate(item, old_size, new_size, place_of_call())
                                                 : given_block{MM_realloc_item(item, old_size, new_size), nullptr};
    if (given.bytes && given.bytes != item) {
        const registry_lock lock;
        mark_released(item, place_of_call());
    }
    note_allocation(given);
    return given.bytes;
}

void mova_checked_EX_raise_exception_line(const char *module, int32_t line, int32_t code)
{
    note_raise(line);
    EX_raise_exception_line(module, line, code);
}
}

/* ---- what the checked host tells ---- */

void mova_checked_report_block(const block_misuse *misuse)
{
    finding found(misuse->function, misuse->where);
    found.say("%s", misuse->what);
    if (misuse->made)
        found.add(misuse->made, "block %p of %zu bytes   made in  ", misuse->block, misuse->size);
    if (misuse->released)
        found.add(misuse->released, "%-10s released in   ", "");
    report(found);
}

const void *mova_checked_place_of(const void *returns_to)
{
    const place caller = place_of_call();
    Dl_info found, own;
    const bool is_known = caller && dladdr(returns_to, &found) && dladdr(&calls_checked, &own);
    return is_known && found.dli_fbase == own.dli_fbase ? caller : returns_to;
}

void mova_checked_note_released(const void *block, const void *where)
{
    const registry_lock lock;
    if (entry *const released = find(block)) {
        mark_released(*released, where);
        released->last_place = where;
    }
}

void mova_checked_note_allocated(const void *block)
{
    const registry_lock lock;
    forget(block);
}

void mova_checked_note_gone(const void *block)
{
    const registry_lock lock;
    keep_entry_of_gone(block);
}
