#ifndef MOVA_TESTS_SUPPORT_VERIFY_SIMPLE_LIST_H
#define MOVA_TESTS_SUPPORT_VERIFY_SIMPLE_LIST_H

#include <mova/lists/simple_list.h>

#include <tests/support/verify_chain.h>

namespace mova::test {

/* Returns the number, as the header gives it, of the first invariant that `list` breaks, or 0. */
inline int broken_invariant(const SL_list &list)
{
    return broken_chain_invariant(static_cast<const mova_sl_links *>(list.first),
                                  static_cast<const mova_sl_links *>(list.last), list.count, list.closed != 0);
}

} // namespace mova::test

#endif
