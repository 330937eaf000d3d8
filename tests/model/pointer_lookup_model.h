#ifndef MOVA_TESTS_MODEL_POINTER_LOOKUP_MODEL_H
#define MOVA_TESTS_MODEL_POINTER_LOOKUP_MODEL_H

#include <cstdint>
#include <span>

namespace mova::test {

/* Turns `bytes` into operations on a pointer lookup, and runs them beside a pair in front of the literal table. After
   every operation the result, the record, each slot of the table, the invariants, the values handed over and the host
   calls are compared. Throws mismatch at the first difference. Runs on the recording host, which it resets. */
void run_pointer_lookup_model(std::span<const uint8_t> bytes);

} // namespace mova::test

#endif
