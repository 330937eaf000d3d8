/* SPDX-License-Identifier: MIT */
#include "file.h"

#include <csignal>
#include <functional>
#include <string>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "messages.h"
#include "world.h"

using namespace atlas;

namespace {

std::string message_of(const std::function<void()> &action)
{
    try {
        action();
    } catch (const Error &error) {
        return error.what();
    }
    return "";
}

std::string read(const std::string &path)
{
    return read_file(path, no_progress);
}

/* While it lives, no file of this process grows past `bytes`. */
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit = {bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

private:
    void (*handler_)(int);
    rlimit before_;
};

const std::vector<std::uint8_t> two_bytes = {0, 255};

} // namespace

TEST(ReadFile, ReturnsEveryByte)
{
    const ScratchDirectory scratch;
    std::string text = std::string("a\0b\n", 4);
    for (int i = 0; i < 100000; ++i)
        text += static_cast<char>(i);
    write_whole(scratch / "in", text);
    EXPECT_EQ(text, read(scratch / "in"));
}

TEST(ReadFile, ReportsHowFarItIs)
{
    const ScratchDirectory scratch;
    write_whole(scratch / "in", std::string(100000, 'x'));
    std::vector<std::size_t> steps;
    read_file(scratch / "in", [&](const char *, std::size_t done, std::size_t all) {
        steps.push_back(done);
        EXPECT_EQ(100000u, all);
    });
    EXPECT_EQ((std::vector<std::size_t>{65536, 100000}), steps);
}

TEST(ReadFile, SaysWhyItFailed)
{
    const ScratchDirectory scratch;
    EXPECT_EQ("cannot be opened: No such file or directory", message_of([&] { read(scratch / "none"); }));
    EXPECT_EQ("cannot be read: Is a directory", message_of([&] { read(scratch.path()); }));
}

TEST(ReadFile, RefusesWhatIsTooLarge)
{
    const ScratchDirectory scratch;
    write_whole(scratch / "in", "");
    std::filesystem::resize_file(scratch / "in", largest_file + 1);
    EXPECT_EQ("larger than 64 MiB", message_of([&] { read(scratch / "in"); }));
}

TEST(ReplaceFile, MakesANewFileLikeAnyOther)
{
    const ScratchDirectory scratch;
    const mode_t mask = umask(027);
    replace_file(scratch / "out", two_bytes);
    umask(mask);
    EXPECT_EQ(std::string("\0\xff", 2), read_whole(scratch / "out"));
    EXPECT_EQ(std::filesystem::perms{0640}, std::filesystem::status(scratch / "out").permissions());
    EXPECT_EQ(1, scratch.entries());
}

TEST(ReplaceFile, PutsTheNewContentsInPlaceOfTheOld)
{
    const ScratchDirectory scratch;
    write_whole(scratch / "out", "a longer text than two bytes");
    replace_file(scratch / "out", two_bytes);
    EXPECT_EQ(std::string("\0\xff", 2), read_whole(scratch / "out"));
    EXPECT_EQ(1, scratch.entries());
}

TEST(ReplaceFile, KeepsTheOldFileWhenTheNewOneDoesNotFit)
{
    const ScratchDirectory scratch;
    write_whole(scratch / "out", "old");
    const std::vector<std::uint8_t> large(100000, 1);
    {
        const FileSizeLimit limit(4096);
        EXPECT_EQ("cannot be written: File too large", message_of([&] { replace_file(scratch / "out", large); }));
    }
    EXPECT_EQ("old", read_whole(scratch / "out"));
    EXPECT_EQ(1, scratch.entries());
}

TEST(ReplaceFile, LeavesNothingBehindWhereThereWasNothing)
{
    const ScratchDirectory scratch;
    {
        const FileSizeLimit limit(1);
        EXPECT_NE("", message_of([&] { replace_file(scratch / "out", two_bytes); }));
    }
    EXPECT_EQ(0, scratch.entries());
}

/* The pipe stands for devices too: a test that fails must not do harm. */
TEST(ReplaceFile, RefusesWhatIsNoOrdinaryFile)
{
    const ScratchDirectory scratch;
    ASSERT_EQ(0, mkfifo((scratch / "pipe").c_str(), 0600));
    const char *expected = "cannot be written: not an ordinary file";
    EXPECT_EQ(expected, message_of([&] { replace_file(scratch.path(), two_bytes); }));
    EXPECT_EQ(expected, message_of([&] { replace_file(scratch / "pipe", two_bytes); }));
    EXPECT_TRUE(std::filesystem::is_fifo(scratch / "pipe"));
}

TEST(ReplaceFile, SaysWhyItFailed)
{
    const ScratchDirectory scratch;
    EXPECT_EQ("cannot be written: No such file or directory",
              message_of([&] { replace_file(scratch / "none" / "out", two_bytes); }));
}
