#ifndef MOVA_TESTS_SUPPORT_VERIFY_DYNAMIC_ARRAY_H
#define MOVA_TESTS_SUPPORT_VERIFY_DYNAMIC_ARRAY_H

#include <mova/arrays/dynamic_array.h>

#include <tests/support/recording_host.h>

namespace mova::test {

/* Returns the number, as the header gives it, of the first invariant that `array` breaks, or 0. */
inline int broken_invariant(const DA_array &array)
{
    if ((array.data == nullptr) != (array.nalloc == 0))
        return 1;
    if (array.nalloc % array.increment != 0)
        return 2;
    if (array.nitems > array.nalloc)
        return 3;
    const auto bytes = static_cast<std::size_t>(array.nalloc) * array.element_size;
    return !array.data || recording_host::get().size_of(array.data) == bytes ? 0 : 4;
}

} // namespace mova::test

#endif
