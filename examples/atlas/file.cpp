/* SPDX-License-Identifier: MIT */
#include "file.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>
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

static const char *const unwritten = "cannot be written";

/* A picture is a file like any other. */
static mode_t ordinary(mode_t mode)
{
    const mode_t mask = umask(0);
    umask(mask);
    return mode & ~mask;
}

/* A device or a directory must not give way to a picture, nor anything to a directory. */
Replacement::Replacement(std::string name, Kind kind) : name_(std::move(name)), kind_(kind)
{
    while (kind == directory && name_.size() > 1 && name_.back() == '/')
        name_.pop_back();
    std::error_code ignored;
    if (kind == directory && std::filesystem::exists(std::filesystem::symlink_status(name_, ignored)))
        throw Error(unwritten + std::string(": it is there already"));
    const std::filesystem::file_status status = std::filesystem::status(name_, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        throw Error(unwritten + std::string(": not an ordinary file"));
    path_ = name_;
    const bool is_made = kind == file ? make_file(path_) != nullptr : mkdtemp((path_ += ".XXXXXX").data()) != nullptr;
    if (!is_made)
        throw error(unwritten);
}

Replacement::~Replacement()
{
    std::error_code ignored;
    if (!path_.empty())
        std::filesystem::remove_all(path_, ignored);
}

void Replacement::finish()
{
    if (chmod(path_.c_str(), ordinary(kind_ == file ? 0666 : 0777)) != 0 ||
        std::rename(path_.c_str(), name_.c_str()) != 0)
        throw error(unwritten);
    path_.clear();
}

void replace_file(const std::string &path, std::span<const std::uint8_t> contents)
{
    Replacement whole(path, Replacement::file);
    OpenFile file(std::fopen(whole.path().c_str(), "wb"));
    if (!file || std::fwrite(contents.data(), 1, contents.size(), file.get()) != contents.size() ||
        std::fclose(file.release()) != 0)
        throw error(unwritten);
    whole.finish();
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
