#ifndef MOVA_TESTS_SUPPORT_VERIFY_GENERIC_LIST_H
#define MOVA_TESTS_SUPPORT_VERIFY_GENERIC_LIST_H

#include <mova/lists/generic_list.h>

#include <tests/support/verify_chain.h>

namespace mova::test {

/* Returns the number, as the header gives it, of the first invariant that `list` breaks, or 0. */
inline int broken_invariant(const GL_list &list)
{
    return broken_chain_invariant(list.first, list.last, list.count, false);
}

} // namespace mova::test

#endif
