#ifndef MOVA_TESTS_SUPPORT_VERIFY_CHAIN_H
#define MOVA_TESTS_SUPPORT_VERIFY_CHAIN_H

#include <cstdint>

namespace mova::test {

/* The invariants that the lists share, under the numbers that all their headers give them. Returns the first that is
   broken, or 0. */
template <class Node>
int broken_chain_invariant(const Node *first, const Node *last, int32_t count, bool ring)
{
    if ((count == 0) != !first || (count == 0) != !last)
        return 2;
    if (count && (first->prev != (ring ? last : nullptr) || last->next != (ring ? first : nullptr)))
        return 3;
    int32_t nodes = 0;
    const Node *reached = nullptr;
    for (const Node *node = first; node && nodes < count; node = node->next) {
        if (node->next && node->next->prev != node)
            return 4;
        reached = node;
        ++nodes;
    }
    return nodes == count && reached == last ? 0 : 1;
}

} // namespace mova::test

#endif
