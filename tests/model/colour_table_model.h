#ifndef MOVA_TESTS_MODEL_COLOUR_TABLE_MODEL_H
#define MOVA_TESTS_MODEL_COLOUR_TABLE_MODEL_H

#include <cstdint>
#include <span>

namespace mova::test {

/* Turns `bytes` into calls on the colour table, good and bad ones, before and after it is made, with a host that throws
   or one that returns, and runs them beside a model made of a set and a map. After every call the result, what is
   raised, called and printed, every word of the table and its invariants are compared. Throws mismatch at the first
   difference. Runs on the recording host, which it resets, and on the process's colour table, which it puts back to its
   start. */
void run_colour_table_model(std::span<const uint8_t> bytes);

} // namespace mova::test

#endif
