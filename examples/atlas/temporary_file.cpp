/* SPDX-License-Identifier: MIT */
#include "temporary_file.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include <unistd.h>

#include "messages.h"

namespace atlas {

static std::string directory()
{
    const char *chosen = std::getenv("TMPDIR");
    return chosen && *chosen ? chosen : "/tmp";
}

[[noreturn]] static void fail(const char *what, const char *why)
{
    throw Error("the temporary file in " + directory() + " cannot be " + what + ": " + why);
}

static int make_file()
{
    std::string path = directory() + "/atlas.XXXXXX";
    const int descriptor = mkstemp(path.data());
    if (descriptor < 0)
        fail("made", std::strerror(errno));
    unlink(path.c_str());
    return descriptor;
}

TemporaryFile::~TemporaryFile()
{
    if (descriptor_ >= 0)
        close(descriptor_);
}

void TemporaryFile::write(std::size_t offset, const void *bytes, std::size_t size)
{
    if (descriptor_ < 0)
        descriptor_ = make_file();
    for (std::size_t done = 0; done < size;) {
        const ssize_t wrote = pwrite(descriptor_, static_cast<const char *>(bytes) + done, size - done,
                                     static_cast<off_t>(offset + done));
        if (wrote < 0 && errno != EINTR)
            fail("written", std::strerror(errno));
        done += wrote > 0 ? static_cast<std::size_t>(wrote) : 0;
    }
}

void TemporaryFile::read(std::size_t offset, void *bytes, std::size_t size)
{
    for (std::size_t done = 0; done < size;) {
        const ssize_t got =
            pread(descriptor_, static_cast<char *>(bytes) + done, size - done, static_cast<off_t>(offset + done));
        if (got == 0)
            fail("read", "it has become shorter");
        if (got < 0 && errno != EINTR)
            fail("read", std::strerror(errno));
        done += got > 0 ? static_cast<std::size_t>(got) : 0;
    }
}

} // namespace atlas
