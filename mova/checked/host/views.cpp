/* SPDX-License-Identifier: MIT */
#include "views.h"

#include <mova/checked/internal/blocks.h>

#include <iterator>

#include <sys/mman.h>
#include <unistd.h>

namespace mova::checked {

namespace {

/* What was left last. It is also read where a program has faulted. */
struct left_view {
    const char *begin;
    size_t bytes;
    const void *where;
    bool was_moved;
};

left_view left[64];
size_t next_left;

size_t whole_pages(size_t bytes)
{
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    return (bytes + page - 1) / page * page;
}

void *map_pages(size_t bytes, int protection)
{
    void *const mapped = mmap(nullptr, bytes, protection, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return mapped == MAP_FAILED ? nullptr : mapped;
}

/* Reserves the addresses, unless they are another's by now. */
void leave(char *view, size_t bytes, const void *where, bool was_moved)
{
    void *const reserved =
        mmap(view, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED_NOREPLACE, -1, 0);
    if (reserved != view) {
        if (reserved != MAP_FAILED)
            munmap(reserved, bytes);
        return;
    }
    left_view &in = left[next_left++ % std::size(left)];
    if (in.bytes != 0)
        munmap(const_cast<char *>(in.begin), in.bytes);
    in = {view, bytes, where, was_moved};
}

} // namespace

char *make_view(size_t bytes)
{
    return static_cast<char *>(map_pages(whole_pages(bytes), PROT_READ | PROT_WRITE));
}

char *move_view(char *view, size_t bytes, const void *where)
{
    const size_t pages = whole_pages(bytes);
    void *const target = map_pages(pages, PROT_NONE);
    if (!target)
        return view;
    if (mremap(view, pages, pages, MREMAP_MAYMOVE | MREMAP_FIXED, target) == MAP_FAILED) {
        munmap(target, pages);
        return view;
    }
    leave(view, pages, where, true);
    return static_cast<char *>(target);
}

void leave_view(char *view, size_t bytes, const void *where)
{
    munmap(view, whole_pages(bytes));
    leave(view, whole_pages(bytes), where, false);
}

} // namespace mova::checked

const char *mova_checked_explain_fault(const void *address, const void **where)
{
    for (const mova::checked::left_view &each : mova::checked::left) {
        const auto *const touched = static_cast<const char *>(address);
        if (each.bytes == 0 || touched < each.begin || touched >= each.begin + each.bytes)
            continue;
        *where = each.where;
        return each.was_moved ? "a block is touched where it lay before its pool moved blocks"
                              : "a block of a released pool is touched";
    }
    return nullptr;
}
