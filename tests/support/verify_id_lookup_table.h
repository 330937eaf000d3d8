#ifndef MOVA_TESTS_SUPPORT_VERIFY_ID_LOOKUP_TABLE_H
#define MOVA_TESTS_SUPPORT_VERIFY_ID_LOOKUP_TABLE_H

#include <mova/arrays/id_lookup_table.h>

#include <tests/support/verify_dynamic_array.h>

namespace mova::test {

/* Returns the number, as the header gives it, of the first invariant that `table` breaks, or 0. */
inline int broken_invariant_of_table(const DA_array &table)
{
    if (table.element_size != sizeof(void *) || broken_invariant(table) != 0)
        return 1;
    return table.nitems >= 1 && *static_cast<const uintptr_t *>(table.data) <= 1 ? 0 : 2;
}

} // namespace mova::test

#endif
