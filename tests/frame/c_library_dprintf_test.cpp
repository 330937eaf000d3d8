/* SPDX-License-Identifier: MIT */
// The debug output is called dprintf in the library's texts, as a function of the C library is. Neither takes the
// other's place.
#include <array>
#include <cstdio>
#include <string>

#include <unistd.h>

#include <gtest/gtest.h>

#include <mova/container.h>
#include <mova/frame/host.h>
#include <mova/host/messages.h>

#include "c_library_dprintf.h"

namespace {

std::string debug_output;

void keep(const char *text)
{
    debug_output += text;
}

class CLibraryDprintf : public testing::Test {
protected:
    void SetUp() override
    {
        debug_output.clear();
        mova_set_debug_print(keep);
        ASSERT_EQ(pipe(ends.data()), 0);
    }

    void TearDown() override
    {
        mova_set_debug_print(nullptr);
        close(ends[0]);
    }

    // Closes the end for writing, so that a text that never came is not waited for.
    std::string written() const
    {
        close(ends[1]);
        std::array<char, 64> text;
        const ssize_t length = read(ends[0], text.data(), text.size());
        return {text.data(), length < 0 ? 0 : static_cast<std::size_t>(length)};
    }

    std::array<int, 2> ends;
};

TEST_F(CLibraryDprintf, WritesToItsFileFromCAndNotToTheDebugOutput)
{
    EXPECT_EQ(write_from_c(ends[1]), 4);
    EXPECT_EQ(written(), "C 1\n");
    EXPECT_EQ(debug_output, "");
}

TEST_F(CLibraryDprintf, WritesToItsFileFromCxxAndNotToTheDebugOutput)
{
    EXPECT_EQ(dprintf(ends[1], "%s %d\n", "C++", 2), 6);
    EXPECT_EQ(written(), "C++ 2\n");
    EXPECT_EQ(debug_output, "");
}

TEST_F(CLibraryDprintf, IsNotWhatTheDebugOutputGoesThrough)
{
    mova_dprintf("%s %d\n", "debug", 3);
    EXPECT_EQ(written(), "");
    EXPECT_EQ(debug_output, "debug 3\n");
}

} // namespace
