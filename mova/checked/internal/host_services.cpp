/* SPDX-License-Identifier: MIT */
/* What the containers ask of their host, on its way there. Their objects are linked with these names in place of the
   services': each passes the call on as it is, and notes what it means. The service may be the default host's, checked or not,
   or the program's own. */
#include "blocks.h"
#include "call.h"

#include <mova/frame/host.h>

#include <dlfcn.h>

namespace mova::checked {

namespace {

/* A block that the innermost call allocated. */
__attribute__((always_inline)) inline void note_allocation(given_block block)
{
    if (!block.bytes)
        return;
    const running_call *const caller = innermost_call();
    const owner_number of = caller ? caller->blocks_of : 0;
    const place where = caller ? caller->where : nullptr;
    const registry_lock lock;
    if (block.noted)
        enter(*block.noted, kind::block, of, where);
    else
        book(block.bytes, kind::block, of, where);
}

inline place place_of_call()
{
    const running_call *const caller = innermost_call();
    return caller ? caller->where : nullptr;
}

/* Whether the checked host serves: it is told where in the program each call came from. */
inline bool has_checked_host()
{
    static const bool has = mova_checked_is_service && mova_checked_is_service(&MM_alloc_item);
    return has;
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
    const given_block given =
        has_checked_host() ? mova_checked_allocate(size, place_of_call()) : given_block{MM_alloc_item(size), nullptr};
    note_allocation(given);
    return given.bytes;
}

/* It is noted before the service has the block: other threads may be given it at once. */
void mova_checked_MM_dealloc_item(void *item, size_t size)
{
    const place where = place_of_call();
    block_record *const small = table::small_record(reinterpret_cast<uintptr_t>(item));
    {
        const registry_lock lock;
        if (small)
            mark_released(small->noted, where);
        else
            mark_released(item, where);
    }
    if (!has_checked_host())
        MM_dealloc_item(item, size);
    else if (small)
        mova_checked_release_small(small, item, size, where);
    else
        mova_checked_release(item, size, where);
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
    mark_released(block, where);
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
