/* SPDX-License-Identifier: MIT */
#include <mova/version.h>

#include <string>

#include <gtest/gtest.h>

namespace {

TEST(Version, TheLibraryTellsThatOfItsHeader)
{
    EXPECT_EQ(mova_version(), MOVA_VERSION);
    EXPECT_EQ(mova_version_text(), std::to_string(MOVA_VERSION_MAJOR) + "." + std::to_string(MOVA_VERSION_MINOR) + "." +
                                       std::to_string(MOVA_VERSION_PATCH));
}

} // namespace
