/* SPDX-License-Identifier: MIT */
/* How a long step says how far it is. Steps call it often; whoever listens decides what to do about it. */
#ifndef ATLAS_PROGRESS_H
#define ATLAS_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>

namespace atlas {

/* Called with the step's name, how much of it is done, and how much there is. */
using Progress = std::function<void(const char *step, std::size_t done, std::size_t all)>;

/* Listens to nothing. */
void no_progress(const char *step, std::size_t done, std::size_t all);

/* One line that is rewritten in place. It appears only after the work has lasted half a second, and is wiped by
   `clear` or at the end of its life. */
class ProgressLine {
public:
    using Time = std::chrono::steady_clock::time_point;
    using Clock = std::function<Time()>;

    /* A line that is not `shown` writes nothing. */
    ProgressLine(std::FILE *out, bool shown, Clock now = std::chrono::steady_clock::now);
    ~ProgressLine() { clear(); }
    ProgressLine(const ProgressLine &) = delete;
    ProgressLine &operator=(const ProgressLine &) = delete;

    void update(const char *step, std::size_t done, std::size_t all);
    void clear();

private:
    std::FILE *out_;
    bool shown_;
    Clock now_;
    Time due_;
    std::string line_;
};

} // namespace atlas

#endif
