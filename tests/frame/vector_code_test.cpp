/* SPDX-License-Identifier: MIT */
#include <mova/frame/internal/vector_code.h>

#include <tests/support/plain_code.h>

#include <gtest/gtest.h>

namespace {

#if defined(__x86_64__) || defined(__i386__)
TEST(VectorCode, IsTakenWhereTheProcessorHasAvx2)
{
    EXPECT_EQ(mova::use_avx2, __builtin_cpu_supports("avx2") != 0);
}
#endif

TEST(VectorCode, IsNotTakenWhereATestAsksForPlainCode)
{
    const bool usually = mova::use_avx2;
    {
        const mova::test::plain_code plain(true);
        EXPECT_FALSE(mova::use_avx2);
        const mova::test::plain_code inner(false);
        EXPECT_FALSE(mova::use_avx2);
    }
    EXPECT_EQ(mova::use_avx2, usually);
}

} // namespace
