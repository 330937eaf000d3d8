#ifndef MOVA_TESTS_MODEL_ID_LOOKUP_TABLE_MODEL_H
#define MOVA_TESTS_MODEL_ID_LOOKUP_TABLE_MODEL_H

#include <cstdint>
#include <span>

namespace mova::test {

/* Turns `bytes` into operations on a table, and runs them beside a vector of words. After every operation the result, the
   whole storage, the invariants, the raises and the host calls are compared. Throws mismatch at the first difference. Runs
   on the recording host, which it resets. */
void run_id_lookup_table_model(std::span<const uint8_t> bytes);

} // namespace mova::test

#endif
