#ifndef MOVA_TESTS_MODEL_MEMORY_BLOCKS_MODEL_H
#define MOVA_TESTS_MODEL_MEMORY_BLOCKS_MODEL_H

#include <cstdint>
#include <span>

namespace mova::test {

/* Turns `bytes` into operations on a pool of movable blocks, whose budget, and the handles that it begins with, they choose
   too. After every operation the pool's invariants and figures, every live block's bytes and the handles that are dead
   are compared with a model made of strings; what moved is checked to have had to. Throws mismatch at the first
   difference. Runs on the recording host, which it resets. */
void run_memory_blocks_model(std::span<const uint8_t> bytes);

} // namespace mova::test

#endif
