/* SPDX-License-Identifier: MIT */
/* The fuzzer of the family that MOVA_FAMILY names. */
#include <tests/model/model.h>

/* A mismatch is thrown and ends the program, which the fuzzer reports with the bytes that led to it. */
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, std::size_t size)
{
    static const mova::test::model &fuzzed = mova::test::model_of(MOVA_FAMILY);
    fuzzed.run({bytes, size});
    return 0;
}
