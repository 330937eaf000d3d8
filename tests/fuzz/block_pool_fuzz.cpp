#include <tests/model/block_pool_model.h>

#include <cstddef>

/* A mismatch is thrown and ends the program, which the fuzzer reports with the bytes that led to it. */
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, std::size_t size)
{
    mova::test::run_block_pool_model({bytes, size});
    return 0;
}
