/* SPDX-License-Identifier: MIT */
#include "report.h"

#include "closing.h"
#include "faults.h"
#include "symbols.h"

#include <mova/checked/checked.h>
#include <mova/frame/host.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include <fcntl.h>
#include <unistd.h>

namespace mova::checked {

namespace {

std::atomic<long> misuses;
std::atomic<bool> is_closing; /* the program ends: nobody could catch what is raised */
std::atomic<mova_misuse_fn> receiver;
std::atomic<void *> receiver_context;

/* ---- options ---- */

options options_of(const char *word)
{
    options chosen;
    chosen.are_read = true;
    while (word && *word) {
        const size_t length = std::strcspn(word, ",");
        const auto is = [=](const char *name) {
            return std::strlen(name) == length && !std::strncmp(word, name, length);
        };
        if (is("abort"))
            chosen.after_report = way::abort;
        else if (is("log"))
            chosen.after_report = way::log;
        else if (is("raise"))
            chosen.after_report = way::raise;
        else if (is("full"))
            chosen.full = true;
        else if (is("order"))
            chosen.order = true;
        else if (is("leaks"))
            chosen.leaks = true;
        else
            std::fprintf(stderr, "mova: MOVA_CHECK has no \"%.*s\"\n", static_cast<int>(length), word);
        word += length + (word[length] == ',');
    }
    return chosen;
}

int open_log()
{
    const char *const file = std::getenv("MOVA_CHECK_LOG");
    const int opened = file && *file ? open(file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666) : -1;
    return opened >= 0 ? opened : STDERR_FILENO;
}

/* ---- one report a place ---- */

/* The places that a misuse was printed for. Where there are too many to remember, all are printed. */
class printed_places {
public:
    bool is_new(const void *where, const char *what)
    {
        const registry_lock lock;
        uintptr_t key = reinterpret_cast<uintptr_t>(where);
        for (; *what; ++what)
            key = key * 31 + static_cast<unsigned char>(*what);
        for (size_t i = 0; i < count_; ++i) {
            if (keys_[i] == key)
                return false;
        }
        if (count_ < std::size(keys_))
            keys_[count_++] = key;
        return true;
    }

private:
    uintptr_t keys_[1024];
    size_t count_ = 0;
};

printed_places printed;

/* ---- text ---- */

class text {
public:
    void add(const char *format, ...) __attribute__((format(printf, 2, 3)))
    {
        va_list arguments;
        va_start(arguments, format);
        const int length = std::vsnprintf(text_ + used_, sizeof text_ - used_, format, arguments);
        va_end(arguments);
        if (length > 0)
            used_ = used_ + static_cast<size_t>(length) < sizeof text_ ? used_ + static_cast<size_t>(length)
                                                                       : sizeof text_ - 1;
    }

    const char *get() const { return text_; }

private:
    char text_[4096] = "";
    size_t used_ = 0;
};

void write_report(const finding &misuse, text &out)
{
    out.add("mova: %s: %s\n", misuse.function(), misuse.what());
    const source_place caller = source_of_running(misuse.where());
    out.add("  in         %-33s %s\n", caller.function, caller.line);
    for (const note &below : misuse) {
        out.add("  %s", below.text);
        if (below.where) {
            const source_place made = source_of(below.where);
            out.add("%-16s %s", made.function, made.line);
        }
        out.add("\n");
    }
}

} // namespace

constinit options chosen_options;
long calls_checked;

void read_options()
{
    chosen_options = options_of(std::getenv("MOVA_CHECK"));
}

namespace {

__attribute__((constructor)) void begin()
{
    if (!chosen_options.are_read)
        read_options();
    explain_faults();
}

} // namespace

void write_out(const char *text)
{
    static const int log = open_log();
    for (size_t left = std::strlen(text); left != 0;) {
        const ssize_t written = write(log, text, left);
        if (written < 0)
            return;
        text += written;
        left -= static_cast<size_t>(written);
    }
}

/* ---- findings ---- */

void finding::say(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(what_, sizeof what_, format, arguments);
    va_end(arguments);
}

void finding::add(place where, const char *format, ...)
{
    if (count_ == most_notes)
        return;
    note &added = notes_[count_++];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(added.text, sizeof added.text, format, arguments);
    va_end(arguments);
    added.where = where;
}

void finding::show_container(owner_number number)
{
    const owner &shown = owner_at(number);
    char name[48];
    const int width = std::snprintf(name, sizeof name, "%s %p", shown.of->noun, shown.container);
    add(shown.made, shown.made ? "%s   made in      " : "%s", name);
    if (!shown.live)
        add(shown.released, "%*s   released in  ", width, "");
}

void finding::show_member(const char *role, const void *address, const entry &known)
{
    const owner_number number = resolved(known.owner);
    const owner &of = owner_at(number);
    add(nullptr, "%-10s %s %p of %s %p", role, of.of->member, address, of.of->noun, of.container);
    if (!known.live)
        add(known.last_place, "%-10s removed in   ", "");
    show_container(number);
}

/* ---- reporting ---- */

void report(const finding &misuse)
{
    const int kept_errno = errno;
    misuses.fetch_add(1, std::memory_order_relaxed);
    const mova_misuse_fn told = receiver.load();
    const bool is_new = printed.is_new(misuse.where(), misuse.what());
    if (told || is_new) {
        text out;
        write_report(misuse, out);
        if (told) {
            const mova_misuse record = {misuse.function(), misuse.what(), misuse.where(), out.get()};
            told(&record, receiver_context.load());
        } else {
            write_out(out.get());
        }
    }
    errno = kept_errno;
    if (asked_for().after_report == way::raise && !is_closing)
        EX_raise_exception_line("checked", 0, MOVA_PRECONDITION_BROKEN);
    else if (asked_for().after_report == way::abort && !told)
        std::abort();
}

/* ---- the end of the program ---- */

namespace {

/* mova-check asks for the closing line. */
__attribute__((destructor)) void close_with_a_line()
{
    const bool has_line = std::getenv("MOVA_CHECK_CLOSE");
    if (!has_line && !asked_for().leaks)
        return;
    is_closing = true;
    const tally left = close_program(asked_for().leaks);
    if (!has_line)
        return;
    text out;
    out.add("mova: %ld calls checked, %ld misuses; %zu containers and %zu blocks left\n", calls_checked, misuses.load(),
            left.containers, left.blocks);
    write_out(out.get());
}

} // namespace

} // namespace mova::checked

void mova_checked_set_receiver(mova_misuse_fn receiver, void *context)
{
    mova::checked::receiver_context.store(context);
    mova::checked::receiver.store(receiver);
}

long mova_checked_misuses(void)
{
    return mova::checked::misuses.load();
}
