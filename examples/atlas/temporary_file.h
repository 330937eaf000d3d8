/* SPDX-License-Identifier: MIT */
/* A file that has no name: it lies in the directory for temporary files (TMPDIR, or /tmp) and is gone with the
   process at the latest. It is made when it is first written to. */
#ifndef ATLAS_TEMPORARY_FILE_H
#define ATLAS_TEMPORARY_FILE_H

#include <cstddef>
#include <cstdint>

namespace atlas {

class TemporaryFile {
public:
    TemporaryFile() = default;
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    /* Both throw Error where they fail. What is read must have been written. */
    void write(std::size_t offset, const void *bytes, std::size_t size);
    void read(std::size_t offset, void *bytes, std::size_t size);

private:
    int descriptor_ = -1;
};

} // namespace atlas

#endif
