/* SPDX-License-Identifier: MIT */
/* A misuse: what is said of it, and what is done about it. */
#ifndef MOVA_CHECKED_INTERNAL_REPORT_H
#define MOVA_CHECKED_INTERNAL_REPORT_H

#include "registry.h"

namespace mova::checked {

/* What MOVA_CHECK asks for. */
enum class way { abort, log, raise };

struct options {
    way after_report = way::abort;
    bool full = false, order = false, leaks = false;
    bool are_read = false;
};

extern options chosen_options;
void read_options();

inline const options &asked_for()
{
    if (!chosen_options.are_read)
        read_options();
    return chosen_options;
}

/* One line of a report below the first: a text, and a place where there is one. */
struct note {
    char text[96];
    place where;
};

/* What is found out under the lock, to be reported without it. */
class finding {
public:
    /* `function` and `what` live as long as the program, or the finding. */
    finding(const char *function, place where) : function_(function), where_(where) { what_[0] = 0; }

    /* Says what is wrong, in the manner of printf. */
    void say(const char *format, ...) __attribute__((format(printf, 2, 3)));

    /* "  position   node 0x… of list 0x…", and of that list where it was made and released. */
    void show_member(const char *role, const void *address, const entry &known);
    void show_container(owner_number number);

    void add(place where, const char *format, ...) __attribute__((format(printf, 3, 4)));

    bool is_misuse() const { return what_[0] != 0; }
    const char *function() const { return function_; }
    const char *what() const { return what_; }
    place where() const { return where_; }
    const note *begin() const { return notes_; }
    const note *end() const { return notes_ + count_; }

private:
    static constexpr int most_notes = 8;

    const char *function_;
    place where_;
    char what_[120];
    note notes_[most_notes];
    int count_ = 0;
};

/* Prints the misuse where its place is new, hands it to the receiver, and does what MOVA_CHECK says. Returns where the
   program is to go on as with the ordinary library. Without the lock. */
void report(const finding &misuse);

/* Writes to MOVA_CHECK_LOG, or stderr. */
void write_out(const char *text);

/* The calls that the program has made; guarded by the registry's lock. */
extern long calls_checked;

} // namespace mova::checked

#endif
