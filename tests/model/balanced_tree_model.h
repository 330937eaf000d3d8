#ifndef MOVA_TESTS_MODEL_BALANCED_TREE_MODEL_H
#define MOVA_TESTS_MODEL_BALANCED_TREE_MODEL_H

#include <cstdint>
#include <span>

namespace mova::test {

/* Turns `bytes` into operations on two balanced trees, one with duplicates and one without, and up to eight iterators
   of all nine kinds, and runs them beside their models (modelled_tree.h). After every operation results, shapes,
   balances, order, iterators, counters, raises, comparisons, conditions asked and host calls are compared. Throws
   mismatch at the first difference. Runs on the recording host, which it resets. */
void run_balanced_tree_model(std::span<const uint8_t> bytes);

} // namespace mova::test

#endif
