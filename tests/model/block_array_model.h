#ifndef MOVA_TESTS_MODEL_BLOCK_ARRAY_MODEL_H
#define MOVA_TESTS_MODEL_BLOCK_ARRAY_MODEL_H

#include <cstdint>
#include <span>

namespace mova::test {

/* Turns `bytes` into operations on three block arrays, open and closed, and runs them beside a model made of vectors. After
   every operation the result, every field, the whole storage, the invariants and the host calls are compared. Throws
   mismatch at the first difference. Runs on the recording host, which it resets. */
void run_block_array_model(std::span<const uint8_t> bytes);

} // namespace mova::test

#endif
