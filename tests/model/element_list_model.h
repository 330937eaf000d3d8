#ifndef MOVA_TESTS_MODEL_ELEMENT_LIST_MODEL_H
#define MOVA_TESTS_MODEL_ELEMENT_LIST_MODEL_H

#include <cstdint>
#include <span>

namespace mova::test {

/* Turns `bytes` into operations on three element lists, open and closed, and four iterators, and runs them beside a model
   made of vectors. After every operation the result, the lists' contents and invariants, every iterator's fields, the
   raises, the tests asked and the host calls are compared. Throws mismatch at the first difference. Runs on the recording
   host, which it resets. */
void run_element_list_model(std::span<const uint8_t> bytes);

} // namespace mova::test

#endif
