#ifndef MOVA_TESTS_SUPPORT_VERIFY_BLOCK_ARRAY_H
#define MOVA_TESTS_SUPPORT_VERIFY_BLOCK_ARRAY_H

#include <mova/arrays/block_array.h>

#include <tests/support/recording_host.h>

namespace mova::test {

/* Returns the number, as the header gives it, of the first invariant that `block` breaks, or 0. */
inline int broken_invariant(const GB_block &block)
{
    if (block.count < 0 || block.count > block.capacity)
        return 1;
    const auto bytes = static_cast<std::size_t>(block.capacity) * block.element_size;
    if (recording_host::get().size_of(block.data) != bytes)
        return 2;
    return block.closed == 0 || block.closed == 1 ? 0 : 3;
}

} // namespace mova::test

#endif
