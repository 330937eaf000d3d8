/* SPDX-License-Identifier: MIT */
/* Every model on random bytes: a test of long runs and one of short runs for each family. And on what the fuzzer kept. */
#include "model.h"

#include <gtest/gtest.h>

#include <cctype>
#include <charconv>
#include <cstdio>
#include <fstream>

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

std::vector<uint8_t> bytes_of(const std::string &hexadecimal)
{
    std::vector<uint8_t> bytes(hexadecimal.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char *digits = &hexadecimal[2 * i];
        if (std::from_chars(digits, digits + 2, bytes[i], 16).ptr != digits + 2)
            ADD_FAILURE() << "not hexadecimal: " << hexadecimal;
    }
    return bytes;
}

/* Each line of the family's file is an input. */
class corpus_test : public testing::Test {
public:
    explicit corpus_test(const model &tested) : tested_(tested) {}

    void TestBody() override
    {
        std::ifstream corpus(MOVA_CORPUS + tested_.family + ".txt");
        int inputs = 0;
        for (std::string line; std::getline(corpus, line);) {
            if (line.starts_with('#'))
                continue;
            ++inputs;
            try {
                tested_.run(bytes_of(line));
            } catch (const std::exception &difference) {
                FAIL() << difference.what() << " (after the bytes " << line << ")";
            }
        }
        EXPECT_GT(inputs, 0) << "./dev fuzz " << tested_.family << " 60 makes " MOVA_CORPUS << tested_.family << ".txt";
    }

private:
    const model &tested_;
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

template <class Test, class... Arguments>
void register_test(const char *name, const model &tested, const Arguments &...arguments)
{
    testing::RegisterTest((in_camel_case(tested.family) + "Model").c_str(), name, nullptr, nullptr, __FILE__, __LINE__,
                          [&]() -> testing::Test * { return new Test(tested, arguments...); });
}

} // namespace

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    for (const model &tested : models()) {
        if (tested.long_runs.count > 0) {
            register_test<random_runs_test>("RandomOperationsBehaveAsOnTheModel", tested, tested.long_runs);
            register_test<random_runs_test>("ShortRunsFromTheStartBehaveAsOnTheModel", tested, tested.short_runs);
        }
        register_test<corpus_test>("WhatTheFuzzerKeptBehavesAsOnTheModel", tested);
    }
    return RUN_ALL_TESTS();
}
