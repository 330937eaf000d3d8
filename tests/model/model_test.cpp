/* SPDX-License-Identifier: MIT */
/* Every model on random bytes: a test of long runs and one of short runs for each family. */
#include "model.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>

namespace {

using namespace mova::test;

/* Where each operation takes ten times as long. */
#ifdef MOVA_SLOW_MACHINE
constexpr uint32_t fewer = 3;
#else
constexpr uint32_t fewer = 1;
#endif

/* The seeds count up from MOVA_TEST_SEED (1 where it is not set), so a failing run is repeated by setting it to the seed
   that was printed. */
class random_runs_test : public testing::Test {
public:
    random_runs_test(const model &tested, const random_runs &runs) : tested_(tested), runs_(runs) {}

    void TestBody() override
    {
        const uint32_t first_seed = test_seed(1);
        std::printf("MOVA_TEST_SEED=%u and the %u after it\n", first_seed, runs_.count / fewer - 1);
        std::fflush(stdout);
        for (uint32_t seed = first_seed; seed < first_seed + runs_.count / fewer; ++seed) {
            try {
                tested_.run(random_bytes(seed, runs_.length));
            } catch (const std::exception &difference) {
                FAIL() << difference.what() << " (MOVA_TEST_SEED=" << seed << ")";
            }
        }
    }

private:
    const model &tested_;
    const random_runs &runs_;
};

/* Of generic_list it is GenericList. */
std::string in_camel_case(const std::string &name)
{
    std::string converted;
    bool begins = true;
    for (const char letter : name) {
        if (letter != '_')
            converted += begins ? static_cast<char>(std::toupper(letter)) : letter;
        begins = letter == '_';
    }
    return converted;
}

void register_test(const model &tested, const char *name, const random_runs &runs)
{
    testing::RegisterTest((in_camel_case(tested.family) + "Model").c_str(), name, nullptr, nullptr, __FILE__, __LINE__,
                          [&]() -> testing::Test * { return new random_runs_test(tested, runs); });
}

} // namespace

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    for (const model &tested : models()) {
        register_test(tested, "RandomOperationsBehaveAsOnTheModel", tested.long_runs);
        register_test(tested, "ShortRunsFromTheStartBehaveAsOnTheModel", tested.short_runs);
    }
    return RUN_ALL_TESTS();
}
