/* SPDX-License-Identifier: MIT */
#include "picture.h"

#include <csignal>
#include <string>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "messages.h"
#include "world.h"

using namespace atlas;

namespace {

std::string read(TemporaryFile &file, std::size_t offset, std::size_t size)
{
    std::vector<std::uint8_t> bytes(size, '?');
    file.read(offset, bytes);
    return {bytes.begin(), bytes.end()};
}

void write(TemporaryFile &file, std::size_t offset, const std::string &text)
{
    file.write(offset, std::vector<std::uint8_t>(text.begin(), text.end()));
}

template <class Action>
std::string complaint_of(Action action)
{
    try {
        action();
    } catch (const Error &error) {
        return error.what();
    }
    return "none";
}

/* As on a full disk: no file grows past this many bytes. */
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : before_(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &limit_);
        const rlimit lower = {bytes, limit_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &lower);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &limit_);
        std::signal(SIGXFSZ, before_);
    }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

private:
    void (*before_)(int);
    rlimit limit_;
};

} // namespace

TEST(TemporaryFile, KeepsWhatIsWrittenAnywhere)
{
    TemporaryFile file;
    write(file, 1000, "there");
    write(file, 0, "here");
    write(file, 1002, "es");
    EXPECT_EQ("here", read(file, 0, 4));
    EXPECT_EQ("these", read(file, 1000, 5));
}

TEST(TemporaryFile, LiesInTheDirectoryForTemporaryFilesWithoutAName)
{
    const ScratchDirectory scratch;
    const TemporaryDirectory directory(scratch.path().string());
    const auto before = std::filesystem::last_write_time(scratch.path());
    std::filesystem::last_write_time(scratch.path(), before - std::chrono::hours(1));
    TemporaryFile file;
    EXPECT_EQ(before - std::chrono::hours(1), std::filesystem::last_write_time(scratch.path())) << "made too early";
    write(file, 0, "a");
    EXPECT_NE(before - std::chrono::hours(1), std::filesystem::last_write_time(scratch.path())) << "made elsewhere";
    EXPECT_EQ(0, scratch.entries());
}

TEST(TemporaryFile, SaysWhyItFails)
{
    TemporaryFile file;
    {
        const TemporaryDirectory nowhere("/none");
        EXPECT_EQ("the temporary file in /none cannot be made: No such file or directory",
                  complaint_of([&] { write(file, 0, "a"); }));
    }
    const ScratchDirectory scratch;
    const TemporaryDirectory directory(scratch.path().string());
    write(file, 0, "abc");
    EXPECT_EQ("the temporary file in " + scratch.path().string() + " cannot be read: it has become shorter",
              complaint_of([&] { read(file, 1, 3); }));
    const FileSizeLimit limit(4);
    EXPECT_EQ("the temporary file in " + scratch.path().string() + " cannot be written: File too large",
              complaint_of([&] { write(file, 3, "defg"); }));
}
