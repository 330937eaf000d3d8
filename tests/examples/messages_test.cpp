/* SPDX-License-Identifier: MIT */
#include "messages.h"

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

using atlas::ProgressLine;
using namespace std::literals;

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

std::string utf8(char32_t code_point)
{
    return std::filesystem::path(std::u32string(1, code_point)).string();
}

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

/* What a terminal would act upon: controls of 7 and 8 bits, line breaks, directions, what shows nothing, what is no UTF-8. */
TEST(Printable, IsOnePlainLine)
{
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"Côte d’Ivoire 中 \U0001F30D", "Côte d’Ivoire 中 \U0001F30D"},
        {std::string_view("a\0b\n\x1b[2J\x7f", 9), "a?b??[2J?"},
        {"\xc2\x9b"
         "2J\xc2\x80\xc2\x9f\xc2\xa0",
         "?2J??\xc2\xa0"},
        {"\x9b"
         "2J",
         "?2J"},
        {"\u061c\u200e\u200f\u202a\u202b\u202c\u202d\u202e\u2066\u2067\u2068\u2069", "????????????"},
        {"\u200d\u2010\u2027\u2028\u2029\u2030\u206a", "?\u2010\u2027??\u2030?"},
        {"a\u00ad\u180e\u200b\u200c\u2060\ufeff\ufff9\U000e0041b", "a????????b"},
        {"\xed\xa0\x80\xf4\x90\x80\x80", "???????"},
        {"\xc3", "?"},
        {"\xe2\x80", "??"},
        {"\xc0\x9b", "??"},
        {"\xe0\x82\x9b", "???"},
        {"\xff", "?"}};
    for (const auto &[text, plain] : cases)
        EXPECT_EQ(plain, atlas::printable(text));
}

/* Every character of Unicode 15 that is a control, a separator of lines or paragraphs, or a format character. */
TEST(Printable, LeavesOutEveryFormatCharacter)
{
    const std::u32string_view acted_upon =
        U"\u00ad\u0600\u0601\u0602\u0603\u0604\u0605\u061c\u06dd\u070f\u0890\u0891\u08e2\u180e"
        U"\u200b\u200c\u200d\u200e\u200f\u2028\u2029\u202a\u202b\u202c\u202d\u202e\u2060\u2061\u2062\u2063\u2064"
        U"\u2066\u2067\u2068\u2069\u206a\u206b\u206c\u206d\u206e\u206f\ufeff\ufff9\ufffa\ufffb\U000110bd\U000110cd";
    const std::pair<char32_t, char32_t> ranges[] = {{0, 0x1f},          {0x7f, 0x9f},       {0x13430, 0x1343f},
                                                    {0x1bca0, 0x1bca3}, {0x1d173, 0x1d17a}, {0xe0001, 0xe0001},
                                                    {0xe0020, 0xe007f}};
    std::u32string all(acted_upon);
    for (const auto &[first, last] : ranges) {
        for (char32_t each = first; each <= last; ++each)
            all += each;
    }
    for (const char32_t each : all)
        EXPECT_EQ("?", atlas::printable(utf8(each))) << std::hex << static_cast<std::uint32_t>(each);
}

TEST(Printable, KeepsEveryLetterBesideThem)
{
    for (const char32_t each : U"\u00a0\u00ac\u00ae\u0606\u061b\u061e\u06dc\u06de\u070d\u0710\u0892\u08e1\u08e3\u180b"
                               U"\u200a\u2010\u2027\u202f\u205f\u2070\ufe70\ufffc\ufffd\U000110be\U00013440"
                               U"\U0001bc9f\U0001d172\U0001d17b\U000e0100"sv)
        EXPECT_EQ(utf8(each), atlas::printable(utf8(each))) << std::hex << static_cast<std::uint32_t>(each);
}
