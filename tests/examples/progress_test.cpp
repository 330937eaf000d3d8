/* SPDX-License-Identifier: MIT */
#include "progress.h"

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

using atlas::ProgressLine;
using namespace std::chrono_literals;

namespace {

/* A line with a clock that the test moves. */
class Progress : public testing::Test {
protected:
    ~Progress() override
    {
        std::fclose(out_);
        std::free(text_);
    }
    ProgressLine::Clock clock()
    {
        return [this] { return now_; };
    }
    std::string text()
    {
        std::fflush(out_);
        return {text_, size_};
    }

    char *text_ = nullptr;
    std::size_t size_ = 0;
    std::FILE *out_ = open_memstream(&text_, &size_);
    ProgressLine::Time now_{};
};

} // namespace

TEST_F(Progress, IsSilentWhileTheWorkIsShort)
{
    {
        ProgressLine line(out_, true, clock());
        now_ += 499ms;
        line.update("drawing", 1, 2);
    }
    EXPECT_EQ("", text());
}

TEST_F(Progress, ShowsALongStepInOneLine)
{
    ProgressLine line(out_, true, clock());
    now_ += 500ms;
    line.update("drawing", 1, 3);
    EXPECT_EQ("atlas: drawing 33 %", text());
}

TEST_F(Progress, RewritesTheLineTenTimesASecondAtMost)
{
    ProgressLine line(out_, true, clock());
    now_ += 500ms;
    line.update("a", 1, 4);
    now_ += 99ms;
    line.update("a", 2, 4);
    EXPECT_EQ("atlas: a 25 %", text());
    now_ += 1ms;
    line.update("a", 3, 4);
    EXPECT_EQ("atlas: a 25 %\r             \ratlas: a 75 %", text());
}

TEST_F(Progress, WipesTheLineAtTheEnd)
{
    {
        ProgressLine line(out_, true, clock());
        now_ += 1s;
        line.update("a", 0, 0);
    }
    EXPECT_EQ("atlas: a 100 %\r              \r", text());
}

TEST_F(Progress, IsSilentWhereItIsNotShown)
{
    {
        ProgressLine line(out_, false, clock());
        now_ += 1h;
        line.update("a", 1, 2);
    }
    EXPECT_EQ("", text());
}

TEST_F(Progress, CountsGigabytes)
{
    ProgressLine line(out_, true, clock());
    now_ += 1s;
    line.update("a", 1500000000, 3000000000);
    EXPECT_EQ("atlas: a 50 %", text());
}
