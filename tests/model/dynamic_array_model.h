#ifndef MOVA_TESTS_MODEL_DYNAMIC_ARRAY_MODEL_H
#define MOVA_TESTS_MODEL_DYNAMIC_ARRAY_MODEL_H

#include <cstdint>
#include <span>

namespace mova::test {

/* Turns `bytes` into operations on three dynamic arrays and four iterators, and runs them beside a model made of vectors.
   After every operation the result, every field, the whole storage, the invariants, every iterator's fields, the raises,
   the tests asked and the host calls are compared. Throws mismatch at the first difference. Runs on the recording host,
   which it resets. */
void run_dynamic_array_model(std::span<const uint8_t> bytes);

} // namespace mova::test

#endif
