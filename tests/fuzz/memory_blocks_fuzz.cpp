#include <tests/model/memory_blocks_model.h>

#include <cstddef>

/* A mismatch is thrown and ends the program, which the fuzzer reports with the bytes that led to it. */
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, std::size_t size)
{
    mova::test::run_memory_blocks_model({bytes, size});
    return 0;
}
