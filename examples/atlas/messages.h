/* SPDX-License-Identifier: MIT */
/* What the program says to people: what is wrong, and how far it is. */
#ifndef ATLAS_MESSAGES_H
#define ATLAS_MESSAGES_H

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>

namespace atlas {

/* What is wrong with the input, the output or the command line: one line of text. It does not say which file it is about;
   whoever reports it knows. */
class Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/* A character of UTF-8 text; one of no bytes is none. */
struct Character {
    std::size_t bytes;
    std::uint32_t code_point;
};

/* Returns the character that the text begins with. */
Character first_character(std::string_view text);

/* Returns the text as a terminal may be given it: one plain line, written from one side to the other. A question mark stands
   for each control character, of 7 or 8 bits, for each that breaks lines, for each format character, joiners of letters and
   marks of the direction among them, and for each byte that is no UTF-8. */
std::string printable(std::string_view text);

/* Called with a long step's name, how much of it is done, and how much there is. Steps call it often; whoever listens decides
   what to do about it. */
using Progress = std::function<void(const char *step, std::size_t done, std::size_t all)>;

/* Listens to nothing. */
inline void no_progress(const char *, std::size_t, std::size_t)
{
}

/* One line that is rewritten in place. It appears only after the work has lasted half a second, and is wiped by `clear` or at
   the end of its life. */
class ProgressLine {
public:
    using Time = std::chrono::steady_clock::time_point;
    using Clock = std::function<Time()>;

    /* A line that is not `shown` writes nothing. */
    ProgressLine(std::FILE *out, bool shown, Clock now = std::chrono::steady_clock::now);
    ~ProgressLine() { clear(); }
    ProgressLine(ProgressLine &&) = delete;

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
