/* SPDX-License-Identifier: MIT */
/* Files of a test's own. */
#ifndef TESTS_EXAMPLES_SCRATCH_H
#define TESTS_EXAMPLES_SCRATCH_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

inline std::string read_whole(const std::filesystem::path &path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

inline void write_whole(const std::filesystem::path &path, const std::string &text)
{
    std::ofstream(path, std::ios::binary) << text;
}

/* A directory that is gone, with all that is in it, after the test. */
class ScratchDirectory {
public:
    ScratchDirectory()
    {
        std::string name = (std::filesystem::temp_directory_path() / "mova-test-XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::runtime_error("no scratch directory");
        path_ = name;
    }
    ~ScratchDirectory() { std::filesystem::remove_all(path_); }
    ScratchDirectory(const ScratchDirectory &) = delete;
    ScratchDirectory &operator=(const ScratchDirectory &) = delete;

    std::filesystem::path operator/(const std::string &name) const { return path_ / name; }
    const std::filesystem::path &path() const { return path_; }
    std::ptrdiff_t entries() const
    {
        return std::distance(std::filesystem::directory_iterator(path_), std::filesystem::directory_iterator());
    }

private:
    std::filesystem::path path_;
};

#endif
