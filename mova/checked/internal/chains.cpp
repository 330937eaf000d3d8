/* SPDX-License-Identifier: MIT */
#include "chains.h"

#include <cerrno>
#include <cstring>
#include <initializer_list>
#include <utility>

#include <sys/uio.h>
#include <unistd.h>

namespace mova::checked {

namespace {

/* What nodes begin with, and what heads begin with in its first and last. */
struct links {
    const void *before, *after;
};

/* What heads begin with, as far as their counts reach. */
struct head {
    links ends;
    int32_t count_and_more[2];
};

/* Calls `visit(node)` along `next` from the first, as long as it returns true. The head may be one that the program made, and
   gone with the block or the stack that it lay in: its beginning is copied, and zeroes stand for the rest. */
void for_each_member(owner_number container, auto visit)
{
    const owner &of = owner_at(container);
    alignas(head) unsigned char copy[sizeof(head) + 2 * sizeof(void *)] = {};
    if (!of.live || !read_safely(of.container, copy, sizeof(head)))
        return;
    links around;
    std::memcpy(&around, copy, sizeof around);
    const void *node = around.before;
    for (int64_t left = of.of->size(copy); node && left > 0 && visit(node); --left)
        node = read_safely(node, &around, sizeof around) ? around.after : nullptr;
}

bool is_in_known_slab(const void *address)
{
    return &mova_checked_slabs && is_in_slab(mova_checked_slabs, reinterpret_cast<uintptr_t>(address));
}

/* What the system says of memory of this process: it may refuse to say anything. */
enum class answer { there, not_there, none };

answer read_pieces(const iovec *pieces, size_t count, void *to, size_t bytes)
{
    const int kept_errno = errno;
    const iovec local = {to, bytes};
    const ssize_t read = process_vm_readv(getpid(), &local, 1, pieces, count, 0);
    const bool is_refused = read < 0 && errno != EFAULT;
    errno = kept_errno;
    return is_refused ? answer::none : read == static_cast<ssize_t>(bytes) ? answer::there : answer::not_there;
}

} // namespace

bool read_safely(const void *from, void *to, size_t bytes)
{
    const iovec all = {const_cast<void *>(from), bytes};
    const answer read = read_pieces(&all, 1, to, bytes);
    if (read == answer::none)
        std::memcpy(to, from, bytes);
    return read != answer::not_there;
}

/* A byte of each page is read. */
bool are_bytes_there(const void *from, size_t bytes)
{
    constexpr size_t most = 256, page = 4096;
    const auto begin = reinterpret_cast<uintptr_t>(from);
    if (begin + bytes < begin)
        return false;
    if (begin / slab_size == (begin + bytes) / slab_size && is_in_known_slab(from))
        return true;
    iovec pieces[most];
    char copies[most];
    size_t count = 0;
    for (size_t at = 0; at < bytes; at += page - (begin + at) % page) {
        pieces[count++] = {reinterpret_cast<void *>(begin + at), 1};
        if (count == most && read_pieces(pieces, std::exchange(count, 0), copies, most) == answer::not_there)
            return false;
    }
    return count == 0 || read_pieces(pieces, count, copies, count) != answer::not_there;
}

bool is_there(const void *record)
{
    if (is_in_known_slab(record))
        return true;
    const entry *const known = find(record);
    links read;
    return (known && known->live) || read_safely(record, &read, sizeof read);
}

bool readable_nodes::look_at(const void *node)
{
    if (!is_in_known_slab(node))
        return is_there(node);
    slab_ = reinterpret_cast<uintptr_t>(node) / slab_size;
    return true;
}

bool is_chain_there(const void *first, const void *last, int32_t count)
{
    readable_nodes is_readable;
    const void *node = first;
    for (int32_t left = count; node && left > 0; --left) {
        if (!is_readable(node))
            return false;
        node = static_cast<const links *>(node)->after;
    }
    return !last || is_readable(last);
}

void claim_members(owner_number container)
{
    for_each_member(container, [=](const void *node) {
        const entry *const known = find(node);
        const bool is_position = known && (known->what == kind::block || known->what == kind::item);
        if (known && !(is_position && known->live && resolved(known->owner) == container))
            book(node, is_position ? known->what : kind::block, container, known->last_place);
        return true;
    });
}

void claim_all_members(owner_number container, kind unknown)
{
    claim_members(container);
    for_each_member(container, [=](const void *node) {
        if (!find(node))
            book(node, unknown, container, nullptr);
        return true;
    });
}

bool claim_beside_a_member(owner_number container, const void *node)
{
    const auto *const around = static_cast<const links *>(node);
    for (const void *const neighbour : {around->before, around->after}) {
        const entry *const known = neighbour ? find(neighbour) : nullptr;
        if (known && known->live && known->what == kind::block && resolved(known->owner) == container) {
            book(node, kind::block, container, nullptr);
            return true;
        }
    }
    return false;
}

bool is_member(owner_number container, const void *node)
{
    bool found = false;
    for_each_member(container, [&found, node](const void *member) {
        found = member == node;
        return !found;
    });
    return found;
}

} // namespace mova::checked
