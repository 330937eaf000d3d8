/* SPDX-License-Identifier: MIT */
/* What the records themselves say, where the registry suspects a position.

   Programs may insert and remove nodes without the library: with bodies that stand in headers, as the typed layer's, and with
   a host of their own, so that a block comes and goes and nobody is told. The registry is a memory then that may be out of
   date. So before a position is said to be removed or another list's, the list is asked: whatever it holds is its own.
   That takes time in proportion to the list, once for each edit of that kind that is used, and nothing where there are none. */
#ifndef MOVA_CHECKED_INTERNAL_CHAINS_H
#define MOVA_CHECKED_INTERNAL_CHAINS_H

#include "registry.h"

#include <mova/lists/internal/invariants.h>

namespace mova::checked {

/* Copies bytes that may not be there. Returns whether they were. */
bool read_safely(const void *from, void *to, size_t bytes);

/* Whether a record lies there that may be read: a program may have damaged the link that leads to it. Those that are known
   are there, and the system is asked about others. */
bool is_there(const void *record);

/* Whether so many bytes may be read. */
bool are_bytes_there(const void *from, size_t bytes);

/* As is_there, of one node after the other: most lie in the slab of the one before. */
class readable_nodes {
public:
    bool operator()(const void *node)
    {
        return reinterpret_cast<uintptr_t>(node) / slab_size == slab_ || look_at(node);
    }

private:
    bool look_at(const void *node);

    uintptr_t slab_ = UINTPTR_MAX;
};

/* Whether the first nodes of a chain, as many as that, and the last one are there. */
bool is_chain_there(const void *first, const void *last, int32_t count);

/* As broken_invariant, of a list whose links may lead anywhere. */
template <class List>
int broken_invariant_of_chain(const List &list)
{
    return mova::broken_invariant(list, readable_nodes());
}

/* Notes the nodes that the registry has otherwise as the container's: those along `next` from its first, no more than it
   counts. */
void claim_members(owner_number container);

/* As claim_members, and of those that the registry does not know what they are. */
void claim_all_members(owner_number container, kind unknown);

/* Whether a node that the registry does not know lies beside one of the container's: then it is noted as one of them. For this
   its links are read. */
bool claim_beside_a_member(owner_number container, const void *node);

/* Whether the container holds the node. Linear. */
bool is_member(owner_number container, const void *node);

} // namespace mova::checked

#endif
