#ifndef MOVA_TESTS_MODEL_RANDOM_RUNS_H
#define MOVA_TESTS_MODEL_RANDOM_RUNS_H

#include <tests/support/byte_source.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <exception>

namespace mova::test {

/* Runs an interpreter on `runs` sequences of `length` random bytes. The seeds count up from MOVA_TEST_SEED (1 where it
   is not set), so a failing run is repeated by setting MOVA_TEST_SEED to the seed that it printed. */
inline void run_random(void (*interpreter)(std::span<const uint8_t>), uint32_t runs, std::size_t length)
{
    const uint32_t first_seed = test_seed(1);
    std::printf("MOVA_TEST_SEED=%u and the %u after it\n", first_seed, runs - 1);
    std::fflush(stdout);
    for (uint32_t seed = first_seed; seed < first_seed + runs; ++seed) {
        try {
            interpreter(random_bytes(seed, length));
        } catch (const std::exception &difference) {
            FAIL() << difference.what() << " (MOVA_TEST_SEED=" << seed << ")";
        }
    }
}

} // namespace mova::test

#endif
