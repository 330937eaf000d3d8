/* SPDX-License-Identifier: MIT */
#include "file.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace atlas {

static Error error(const std::string &what)
{
    return Error(what + ": " + std::strerror(errno));
}

std::string read_file(const std::string &path, const Progress &progress)
{
    const OpenFile file(std::fopen(path.c_str(), "rb"));
    if (!file)
        throw error("cannot be opened");
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
        throw error("cannot be read");
    return text;
}

/* Makes a file that only its owner may read, and adds to the path what makes its name new. Nothing that is written waits in a
   buffer. Returns null where that fails. */
static OpenFile make_file(std::string &path)
{
    path += ".XXXXXX";
    const int descriptor = mkstemp(path.data());
    OpenFile file(descriptor < 0 ? nullptr : fdopen(descriptor, "w+b"));
    if (file)
        std::setvbuf(file.get(), nullptr, _IONBF, 0);
    return file;
}

/* ---- replacing ---- */

/* A picture is a file like any other. */
static mode_t ordinary_mode()
{
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

/* A device or a directory must not give way to a picture. */
void replace_file(const std::string &path, std::span<const std::uint8_t> contents)
{
    std::error_code ignored;
    const std::filesystem::file_status status = std::filesystem::status(path, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        throw Error("cannot be written: not an ordinary file");
    std::string name = path;
    OpenFile file = make_file(name);
    if (!file)
        throw error("cannot be written");
    fchmod(fileno(file.get()), ordinary_mode());
    const bool is_whole = std::fwrite(contents.data(), 1, contents.size(), file.get()) == contents.size();
    if (!is_whole || std::fclose(file.release()) != 0 || std::rename(name.c_str(), path.c_str()) != 0) {
        const Error why = error("cannot be written");
        unlink(name.c_str());
        throw why;
    }
}

/* ---- keeping ---- */

static std::string directory()
{
    const char *chosen = std::getenv("TMPDIR");
    return chosen && *chosen ? chosen : "/tmp";
}

static std::string unable_to(const char *act)
{
    return "the temporary file in " + directory() + " cannot be " + act;
}

void TemporaryFile::write(std::size_t offset, std::span<const std::uint8_t> bytes)
{
    if (!file_) {
        std::string path = directory() + "/atlas";
        file_ = make_file(path);
        if (!file_)
            throw error(unable_to("made"));
        unlink(path.c_str());
    }
    if (std::fseek(file_.get(), static_cast<long>(offset), SEEK_SET) != 0 ||
        std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size())
        throw error(unable_to("written"));
}

void TemporaryFile::read(std::size_t offset, std::span<std::uint8_t> bytes)
{
    if (std::fseek(file_.get(), static_cast<long>(offset), SEEK_SET) != 0)
        throw error(unable_to("read"));
    if (std::fread(bytes.data(), 1, bytes.size(), file_.get()) == bytes.size())
        return;
    if (std::ferror(file_.get()))
        throw error(unable_to("read"));
    throw Error(unable_to("read") + ": it has become shorter");
}

} // namespace atlas
