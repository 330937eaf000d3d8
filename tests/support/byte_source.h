/* SPDX-License-Identifier: MIT */
/* What a model test runs on: bytes that become operations. Random bytes with a seed in the ordinary tests, a fuzzer's
   bytes elsewhere. */
#ifndef MOVA_TESTS_SUPPORT_BYTE_SOURCE_H
#define MOVA_TESTS_SUPPORT_BYTE_SOURCE_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace mova::test {

class byte_source {
public:
    explicit byte_source(std::span<const uint8_t> bytes) : bytes_(bytes) {}

    bool empty() const { return bytes_.empty(); }

    /* The next byte; 0 when there is none left. */
    uint8_t next()
    {
        if (bytes_.empty())
            return 0;
        uint8_t byte = bytes_.front();
        bytes_ = bytes_.subspan(1);
        return byte;
    }

    /* A number below `bound`, which is at most 256. */
    std::size_t below(std::size_t bound) { return next() % bound; }

private:
    std::span<const uint8_t> bytes_;
};

/* What an interpreter throws where the container and its model differ. */
struct mismatch : std::runtime_error {
    using std::runtime_error::runtime_error;
};

inline void require(bool holds, const std::string &what)
{
    if (!holds)
        throw mismatch(what);
}

/* The seed of a random test: MOVA_TEST_SEED where it is set, else `standard`. */
inline uint32_t test_seed(uint32_t standard)
{
    const char *given = std::getenv("MOVA_TEST_SEED");
    return given ? static_cast<uint32_t>(std::strtoul(given, nullptr, 0)) : standard;
}

inline std::vector<uint8_t> random_bytes(uint32_t seed, std::size_t count)
{
    std::mt19937 engine(seed);
    std::vector<uint8_t> bytes(count);
    for (uint8_t &byte : bytes)
        byte = static_cast<uint8_t>(engine() >> 24);
    return bytes;
}

} // namespace mova::test

#endif
