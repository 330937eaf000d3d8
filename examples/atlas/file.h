/* SPDX-License-Identifier: MIT */
/* Whole files, read at once and replaced at once; and a file to keep bytes in for a while. */
#ifndef ATLAS_FILE_H
#define ATLAS_FILE_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

#include "messages.h"

namespace atlas {

/* As large a map as makes sense, and no more than memory holds once it is decoded. */
constexpr std::size_t largest_file = std::size_t{64} << 20;

/* Returns what the file holds. Throws Error where it cannot be read or is larger than `largest_file`. */
std::string read_file(const std::string &path, const Progress &progress);

/* Gives the file new contents, in one step: whoever looks sees the old file or the whole new one. Throws Error
   where that fails, and leaves what was there before. */
void replace_file(const std::string &path, std::span<const std::uint8_t> contents);

/* A file or a directory that is made beside the place where it is to be, and taken away again with all that is in it, unless it is
   whole in the end. */
class Replacement {
public:
    /* Makes an empty one. Only a file may replace another one; a directory is new. Throws Error where it cannot be made. */
    enum Kind { file, directory };
    Replacement(std::string name, Kind kind);
    ~Replacement();
    Replacement(Replacement &&) = delete;

    /* Where it is as yet. */
    const std::string &path() const { return path_; }
    /* Puts it where it is to be. Throws Error where that fails. */
    void finish();

private:
    std::string name_, path_;
    Kind kind_;
};

struct CloseFile {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, CloseFile>;

/* A file that has no name: it lies in the directory for temporary files (TMPDIR, or /tmp) and is gone with the
   process at the latest. It is made when it is first written to. */
class TemporaryFile {
public:
    /* Both throw Error where they fail. What is read must have been written. */
    void write(std::size_t offset, std::span<const std::uint8_t> bytes);
    void read(std::size_t offset, std::span<std::uint8_t> bytes);

private:
    OpenFile file_;
};

} // namespace atlas

#endif
