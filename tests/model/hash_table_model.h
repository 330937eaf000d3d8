#ifndef MOVA_TESTS_MODEL_HASH_TABLE_MODEL_H
#define MOVA_TESTS_MODEL_HASH_TABLE_MODEL_H

#include <cstdint>
#include <span>

namespace mova::test {

/* Turns `bytes` into operations on a hash table and an iterator, and runs them beside the literal table and a standard
   map. After every operation the result, each field and slot of the table, its invariants, the iterator and the host
   calls are compared. Throws mismatch at the first difference. Runs on the recording host, which it resets. */
void run_hash_table_model(std::span<const uint8_t> bytes);

} // namespace mova::test

#endif
