/* SPDX-License-Identifier: MIT */
#include "file.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <span>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "messages.h"

namespace atlas {

[[noreturn]] static void fail(const char *what)
{
    throw Error(std::string(what) + ": " + std::strerror(errno));
}

/* ---- reading ---- */

std::string read_file(const std::string &path, const Progress &progress)
{
    const auto close = [](std::FILE *opened) { std::fclose(opened); };
    const std::unique_ptr<std::FILE, decltype(close)> file(std::fopen(path.c_str(), "rb"));
    if (!file)
        fail("cannot be opened");
    std::error_code unknown;
    const std::uintmax_t expected = std::filesystem::file_size(path, unknown);
    const std::size_t size = unknown ? 0 : static_cast<std::size_t>(expected);
    std::string text;
    std::vector<char> block(65536);
    while (const std::size_t got = std::fread(block.data(), 1, block.size(), file.get())) {
        text.append(block.data(), got);
        if (text.size() > largest_file)
            throw Error("larger than " + std::to_string(largest_file >> 20) + " MiB");
        progress("reading", text.size(), std::max(size, text.size()));
    }
    if (std::ferror(file.get()))
        fail("cannot be read");
    return text;
}

/* ---- replacing ---- */

/* mkstemp makes files that only their owner may read; a picture is a file like any other. */
static mode_t ordinary_mode()
{
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

/* A new file beside the one it is to become. It is gone with this record, unless it was renamed. */
class NewFile {
public:
    explicit NewFile(const std::string &target) : path_(target + ".XXXXXX"), descriptor_(mkstemp(path_.data()))
    {
        if (descriptor_ < 0)
            fail("cannot be written");
        fchmod(descriptor_, ordinary_mode());
    }
    ~NewFile()
    {
        if (descriptor_ >= 0)
            close(descriptor_);
        if (!path_.empty())
            unlink(path_.c_str());
    }
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;

    void write(std::span<const std::uint8_t> contents)
    {
        while (!contents.empty()) {
            const ssize_t wrote = ::write(descriptor_, contents.data(), contents.size());
            if (wrote < 0 && errno != EINTR)
                fail("cannot be written");
            contents = contents.subspan(static_cast<std::size_t>(std::max<ssize_t>(wrote, 0)));
        }
    }
    void rename(const std::string &target)
    {
        if (close(std::exchange(descriptor_, -1)) != 0 || std::rename(path_.c_str(), target.c_str()) != 0)
            fail("cannot be written");
        path_.clear();
    }

private:
    std::string path_;
    int descriptor_;
};

/* A device or a directory must not give way to a picture. */
void replace_file(const std::string &path, const std::vector<std::uint8_t> &contents)
{
    std::error_code ignored;
    const std::filesystem::file_status status = std::filesystem::status(path, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        throw Error("cannot be written: not an ordinary file");
    NewFile file(path);
    file.write(contents);
    file.rename(path);
}

} // namespace atlas
