/* SPDX-License-Identifier: MIT */
/* The fixture of every test that runs on the recording host. */
#ifndef MOVA_TESTS_SUPPORT_RECORDING_HOST_TEST_CASE_H
#define MOVA_TESTS_SUPPORT_RECORDING_HOST_TEST_CASE_H

#include "recording_host.h"

#include <gtest/gtest.h>

namespace mova::test {

using log = std::vector<std::string>;

/* Makes a call that must raise this error. */
template <class Call>
void expect_raise(const std::string &module, int32_t line, int32_t code, Call call)
{
    const std::string expected = module + " " + std::to_string(line) + " " + std::to_string(code);
    try {
        call();
        ADD_FAILURE() << "nothing was raised instead of " << expected;
    } catch (const raised &error) {
        EXPECT_EQ(error.module + " " + std::to_string(error.line) + " " + std::to_string(error.code), expected);
    }
}

/* Starts each test with a fresh host; at its end nothing may be left allocated, and the host must not have complained. */
class recording_host_test_case : public ::testing::Test {
protected:
    void SetUp() override { host.reset(); }

    void TearDown() override
    {
        EXPECT_EQ(host.take_complaints(), log{});
        EXPECT_EQ(host.live_blocks(), 0u);
        EXPECT_EQ(host.pool().live_blocks(), 0u);
        host.reset();
    }

    recording_host &host = recording_host::get();
};

} // namespace mova::test

#endif
