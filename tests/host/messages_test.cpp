/* SPDX-License-Identifier: MIT */
#include <mova/host/messages.h>

#include <atomic>
#include <csignal>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <mova/frame/host.h>

namespace {

std::vector<std::string> received;

void receive(const char *text)
{
    received.emplace_back(text);
}

void refuse(const char *text)
{
    throw std::length_error(text);
}

class Messages : public testing::Test {
protected:
    void SetUp() override { received.clear(); }
    void TearDown() override
    {
        mova_set_debug_print(nullptr);
        mova_set_message(nullptr);
    }
};

TEST_F(Messages, DebugOutputGoesToStderrAsItsFormatSays)
{
    testing::internal::CaptureStderr();
    mova_dprintf("%s: %4d of %-3u|", "node", 7, 12U);
    mova_dprintf("\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "node:    7 of 12 |\n");
}

TEST_F(Messages, AWarningGoesToStderrOnALineOfItsOwn)
{
    testing::internal::CaptureStderr();
    MSG_Message("100 % full, %s and all");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "100 % full, %s and all\n");
}

TEST_F(Messages, ASetFunctionReceivesTheDebugOutputInPlaceOfStderr)
{
    mova_set_debug_print(receive);
    testing::internal::CaptureStderr();
    mova_dprintf("%d items\n", 3);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(received, std::vector<std::string>{"3 items\n"});
}

TEST_F(Messages, ASetFunctionReceivesTheWarningInPlaceOfStderr)
{
    mova_set_message(receive);
    testing::internal::CaptureStderr();
    MSG_Message("%d: nothing is formatted");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(received, std::vector<std::string>{"%d: nothing is formatted"});
}

TEST_F(Messages, TheTwoFunctionsAreSetApart)
{
    mova_set_debug_print(receive);
    testing::internal::CaptureStderr();
    MSG_Message("a warning");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "a warning\n");
    EXPECT_TRUE(received.empty());
}

TEST_F(Messages, ATextOfAnyLengthArrivesWhole)
{
    mova_set_debug_print(receive);
    for (std::size_t length : {0U, 1U, 510U, 511U, 512U, 513U, 100000U}) {
        received.clear();
        const std::string text(length, 'x');
        mova_dprintf("%d%s%d", 1, text.c_str(), 2);
        EXPECT_EQ(received, std::vector<std::string>{"1" + text + "2"}) << "length " << length;
    }
}

TEST_F(Messages, AFormatThatCannotBeCarriedOutPrintsNothing)
{
    static const wchar_t not_in_the_c_locale[] = {0x100, 0};
    mova_set_debug_print(receive);
    mova_dprintf("%ls", not_in_the_c_locale);
    EXPECT_TRUE(received.empty());
}

TEST_F(Messages, SettingAFunctionReturnsTheOneBefore)
{
    EXPECT_EQ(mova_set_debug_print(receive), nullptr);
    EXPECT_EQ(mova_set_debug_print(refuse), receive);
    EXPECT_EQ(mova_set_message(refuse), nullptr);
    EXPECT_EQ(mova_set_message(receive), refuse);
}

TEST_F(Messages, NullRestoresStderr)
{
    mova_set_debug_print(receive);
    mova_set_message(receive);
    EXPECT_EQ(mova_set_debug_print(nullptr), receive);
    EXPECT_EQ(mova_set_message(nullptr), receive);
    testing::internal::CaptureStderr();
    mova_dprintf("one ");
    MSG_Message("two");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "one two\n");
    EXPECT_TRUE(received.empty());
}

TEST_F(Messages, ASetFunctionMayThrow)
{
    mova_set_debug_print(refuse);
    mova_set_message(refuse);
    const std::string long_text(2000, 'x');
    EXPECT_THROW(mova_dprintf("short"), std::length_error);
    EXPECT_THROW(mova_dprintf("%s", long_text.c_str()), std::length_error);
    EXPECT_THROW(MSG_Message("warning"), std::length_error);
}

std::atomic<int> at_first{0};
std::atomic<int> at_second{0};

void count_at_first(const char *)
{
    ++at_first;
}

void count_at_second(const char *)
{
    ++at_second;
}

TEST_F(Messages, EachTextReachesOneFunctionWhileAnotherThreadSetsThem)
{
    constexpr int texts = 5000;
    mova_set_debug_print(count_at_first);
    mova_set_message(count_at_first);
    std::atomic<bool> done{false};
    std::thread setter([&done] {
        while (!done) {
            for (const mova_text_fn function : {count_at_second, count_at_first}) {
                mova_set_debug_print(function);
                mova_set_message(function);
            }
        }
    });
    for (int i = 0; i < texts; ++i) {
        mova_dprintf("%d", i);
        MSG_Message("text");
    }
    done = true;
    setter.join();
    EXPECT_EQ(at_first + at_second, 2 * texts);
}

volatile std::sig_atomic_t traps = 0;

void count_trap(int)
{
    traps = traps + 1;
}

TEST_F(Messages, DebugBreakReturnsAtOnceWithoutADebugger)
{
    const auto before = std::signal(SIGTRAP, count_trap);
    debug_break();
    std::signal(SIGTRAP, before);
    EXPECT_EQ(traps, 0);
}

} // namespace
