/* SPDX-License-Identifier: MIT */
#include "progress.h"

#include <cstdint>
#include <utility>

namespace atlas {

constexpr std::chrono::milliseconds patience{500};
constexpr std::chrono::milliseconds interval{100};

static std::string line_of(const char *step, std::size_t done, std::size_t all)
{
    const std::uint64_t percent = all ? std::uint64_t{100} * done / all : 100;
    return "atlas: " + std::string(step) + " " + std::to_string(percent) + " %";
}

void no_progress(const char *, std::size_t, std::size_t)
{
}

ProgressLine::ProgressLine(std::FILE *out, bool shown, Clock now)
    : out_(out), shown_(shown), now_(std::move(now)), due_(now_() + patience)
{
}

void ProgressLine::update(const char *step, std::size_t done, std::size_t all)
{
    if (!shown_ || now_() < due_)
        return;
    due_ = now_() + interval;
    clear();
    line_ = line_of(step, done, all);
    std::fputs(line_.c_str(), out_);
    std::fflush(out_);
}

void ProgressLine::clear()
{
    if (line_.empty())
        return;
    std::fprintf(out_, "\r%*s\r", static_cast<int>(line_.size()), "");
    std::fflush(out_);
    line_.clear();
}

} // namespace atlas
