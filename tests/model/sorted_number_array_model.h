#ifndef MOVA_TESTS_MODEL_SORTED_NUMBER_ARRAY_MODEL_H
#define MOVA_TESTS_MODEL_SORTED_NUMBER_ARRAY_MODEL_H

#include <cstdint>
#include <span>

namespace mova::test {

/* Turns `bytes` into edits of a companion list, some of whose entries are selected, with a sorted number array that follows
   them, and into additions to and removals from another sorted number array beside a set. After every operation the
   numbers, their order, the storage's size and the host calls are compared. Throws mismatch at the first difference. Runs
   on the recording host, which it resets. */
void run_sorted_number_array_model(std::span<const uint8_t> bytes);

} // namespace mova::test

#endif
