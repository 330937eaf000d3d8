/* SPDX-License-Identifier: MIT */
#include "file.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "messages.h"

namespace atlas {

struct CloseFile {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

[[noreturn]] static void fail(const char *what)
{
    throw Error(std::string(what) + ": " + std::strerror(errno));
}

/* ---- reading ---- */

static std::size_t expected_size(std::FILE *file)
{
    struct stat status;
    const bool regular = fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode);
    return regular && status.st_size > 0 ? static_cast<std::size_t>(status.st_size) : 0;
}

std::string read_file(const std::string &path, const Progress &progress)
{
    const File file(std::fopen(path.c_str(), "rb"));
    if (!file)
        fail("cannot be opened");
    const std::size_t size = expected_size(file.get());
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
static void check_replaceable(const std::string &path)
{
    struct stat status;
    if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
        throw Error("cannot be written: not an ordinary file");
}

void replace_file(const std::string &path, const std::vector<std::uint8_t> &contents)
{
    check_replaceable(path);
    NewFile file(path);
    file.write(contents);
    file.rename(path);
}

} // namespace atlas
