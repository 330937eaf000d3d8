#ifndef MOVA_TESTS_SUPPORT_VERIFY_ELEMENT_LIST_H
#define MOVA_TESTS_SUPPORT_VERIFY_ELEMENT_LIST_H

#include <mova/lists/element_list.h>

#include <tests/support/verify_chain.h>

namespace mova::test {

/* Returns the number, as the header gives it, of the first invariant that `list` breaks, or 0. */
inline int broken_invariant(const EL_list &list)
{
    return broken_chain_invariant(list.first, list.last, list.count, list.closed != 0);
}

} // namespace mova::test

#endif
