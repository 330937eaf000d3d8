/* SPDX-License-Identifier: MIT */
#include <mova/host/errors.h>

#include <array>
#include <atomic>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <mova/frame/host.h>

namespace {

struct raise {
    const char *module;
    int32_t line;
    int32_t code;
};

std::vector<raise> recorded;

void record(const char *module, int32_t line, int32_t code)
{
    recorded.push_back({module, line, code});
}

void throw_length_error(const char *module, int32_t, int32_t)
{
    throw std::length_error(module);
}

std::string text_of(int32_t code)
{
    std::array<char, 200> text;
    mova_error_text(text.data(), text.size(), "mine", 108, code);
    return text.data();
}

class Errors : public testing::Test {
protected:
    void SetUp() override { recorded.clear(); }
    void TearDown() override { mova_set_error_handler(nullptr); }
};

TEST_F(Errors, WithoutAHandlerARaiseThrowsModuleLineAndCode)
{
    static const char module[] = "gentree";
    try {
        EX_raise_exception_line(module, 481, MOVA_PRECONDITION_BROKEN);
        FAIL() << "returned";
    } catch (const mova::error &error) {
        EXPECT_EQ(error.module(), module);
        EXPECT_EQ(error.line(), 481);
        EXPECT_EQ(error.code(), 4297);
        EXPECT_STREQ(error.what(), "gentree, line 481: a precondition was broken (4297). "
                                   "GT_remove_item: the comparisons do not lead to the node");
    }
}

TEST_F(Errors, AnErrorIsCaughtAsAStandardException)
{
    EXPECT_THROW(EX_raise_exception_line("darray", 33, MOVA_ALLOCATION_FAILED), std::exception);
}

TEST_F(Errors, EachCodeHasItsText)
{
    EXPECT_EQ(text_of(4197), "mine, line 108: memory ran out (4197)");
    EXPECT_EQ(text_of(4297), "mine, line 108: a precondition was broken (4297)");
    EXPECT_EQ(text_of(4397), "mine, line 108: an id or a pointer was not found (4397)");
}

TEST_F(Errors, AnUnknownCodeIsNamedAllTheSame)
{
    EXPECT_EQ(text_of(-17), "mine, line 108: an error was raised (-17)");
}

TEST_F(Errors, TheLibrarysOwnRaisesAreDescribedByModuleAndLine)
{
    EXPECT_STREQ(mova_error_description("gentree", 896), "GT_next_item: the iterator is not in its tree's list");
    EXPECT_STREQ(mova_error_description("egenlist", 557),
                 "EL_replace_items_inbetween: the source has fewer elements than the range");
    EXPECT_EQ(mova_error_description("gentree", 557), nullptr);
    EXPECT_EQ(mova_error_description("mine", 896), nullptr);
    EXPECT_EQ(mova_error_description("", 0), nullptr);
}

TEST_F(Errors, AnExceptionHoldsEveryTextOfTheLibraryWhole)
{
    int described = 0, lines = 0;
    for (const char *module :
         {"RGBLUT", "cache", "darray", "egenlist", "gentree", "memory", "memory blocks", "plut", "sgenlist"})
        for (int32_t line = 0; line < 2000; ++line)
            if (const char *description = mova_error_description(module, line)) {
                ++described;
                lines += line;
                EXPECT_TRUE(
                    std::string_view(mova::error(module, line, MOVA_ID_NOT_FOUND).what()).ends_with(description))
                    << module << ' ' << line;
            }
    EXPECT_EQ(described, 45);
    EXPECT_EQ(lines, 21321); /* of all rows in docs/errors.md together */
}

TEST_F(Errors, ATextThatDoesNotFitIsCutAndItsWholeLengthReturned)
{
    std::array<char, 12> buffer;
    buffer.fill('#');
    EXPECT_EQ(mova_error_text(buffer.data(), 10, "cache", 334, MOVA_ALLOCATION_FAILED),
              std::strlen("cache, line 334: memory ran out (4197). "
                          "cc_alloc: the pool has no room, even with every body out"));
    EXPECT_STREQ(buffer.data(), "cache, li");
    EXPECT_EQ(buffer[10], '#');
}

TEST_F(Errors, ASizeOfZeroWritesNothing)
{
    EXPECT_EQ(mova_error_text(nullptr, 0, "cache", 334, MOVA_ALLOCATION_FAILED),
              std::strlen("cache, line 334: memory ran out (4197). "
                          "cc_alloc: the pool has no room, even with every body out"));
}

TEST_F(Errors, ALongModuleNameCutsTheTextOfTheExceptionButNotTheName)
{
    const std::string module(500, 'm');
    const mova::error error(module.c_str(), 1, MOVA_ID_NOT_FOUND);
    EXPECT_EQ(error.what(), std::string(159, 'm'));
    EXPECT_EQ(error.module(), module.c_str());
}

TEST_F(Errors, ACopyKeepsItsOwnText)
{
    std::exception_ptr kept;
    try {
        EX_raise_exception_line("sgenlist", 75, MOVA_PRECONDITION_BROKEN);
    } catch (const mova::error &error) {
        kept = std::make_exception_ptr(error);
    }
    try {
        std::rethrow_exception(kept);
    } catch (const std::exception &error) {
        EXPECT_STREQ(error.what(), "sgenlist, line 75: a precondition was broken (4297). "
                                   "SL_release: the list holds items");
    }
}

TEST_F(Errors, AHandlerReceivesTheRaiseAndMayReturn)
{
    static const char module[] = "sgenlist";
    mova_set_error_handler(record);
    EX_raise_exception_line(module, 743, MOVA_PRECONDITION_BROKEN);
    ASSERT_EQ(recorded.size(), 1U);
    EXPECT_EQ(recorded[0].module, module);
    EXPECT_EQ(recorded[0].line, 743);
    EXPECT_EQ(recorded[0].code, 4297);
}

TEST_F(Errors, AHandlerMayThrow)
{
    mova_set_error_handler(throw_length_error);
    EXPECT_THROW(EX_raise_exception_line("darray", 111, MOVA_ALLOCATION_FAILED), std::length_error);
}

TEST_F(Errors, SettingAHandlerReturnsTheOneBefore)
{
    EXPECT_EQ(mova_set_error_handler(record), nullptr);
    EXPECT_EQ(mova_set_error_handler(throw_length_error), record);
    EXPECT_EQ(mova_set_error_handler(nullptr), throw_length_error);
    EXPECT_EQ(mova_set_error_handler(nullptr), nullptr);
}

TEST_F(Errors, NullRestoresTheException)
{
    mova_set_error_handler(record);
    mova_set_error_handler(nullptr);
    EXPECT_THROW(EX_raise_exception_line("darray", 271, MOVA_ALLOCATION_FAILED), mova::error);
    EXPECT_TRUE(recorded.empty());
}

std::atomic<int> at_first{0};
std::atomic<int> at_second{0};

void count_at_first(const char *, int32_t, int32_t)
{
    ++at_first;
}

void count_at_second(const char *, int32_t, int32_t)
{
    ++at_second;
}

TEST_F(Errors, EachRaiseReachesOneHandlerWhileAnotherThreadSetsThem)
{
    constexpr int raises = 5000;
    mova_set_error_handler(count_at_first);
    std::atomic<bool> done{false};
    std::thread setter([&done] {
        while (!done) {
            mova_set_error_handler(count_at_second);
            mova_set_error_handler(count_at_first);
        }
    });
    for (int i = 0; i < raises; ++i)
        EX_raise_exception_line("cache", 334, MOVA_ALLOCATION_FAILED);
    done = true;
    setter.join();
    EXPECT_EQ(at_first + at_second, raises);
}

} // namespace
