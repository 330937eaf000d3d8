#ifndef MOVA_TESTS_MODEL_SWAP_CACHE_MODEL_H
#define MOVA_TESTS_MODEL_SWAP_CACHE_MODEL_H

#include <cstdint>
#include <span>

namespace mova::test {

/* Turns `bytes` into operations on a swap cache whose pool has a budget that they choose, and moves every block at every
   allocation. Some write-backs make their own entry the first. After every operation the result, the order and the
   fields of the entries, every body's bytes, what was written back, and all callbacks, host calls and traces are
   compared with a model. Throws mismatch at the first difference. Runs on the recording host, which it resets. */
void run_swap_cache_model(std::span<const uint8_t> bytes);

} // namespace mova::test

#endif
