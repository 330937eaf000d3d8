/* SPDX-License-Identifier: MIT */
#include <mova/host/messages.h>

#include <atomic>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>

#include <time.h>

#include <mova/frame/host.h>

namespace {

constinit std::atomic<mova_text_fn> debug_print{nullptr};
constinit std::atomic<mova_text_fn> show_message{nullptr};

// Formats on the stack, and a second time into memory where that is too short.
void print_formatted(mova_text_fn print, const char *format, std::va_list arguments)
{
    std::va_list again;
    va_copy(again, arguments);
    char short_text[512];
    const int length = std::vsnprintf(short_text, sizeof short_text, format, arguments);
    const std::size_t size = length < 0 ? 0 : static_cast<std::size_t>(length) + 1;
    std::unique_ptr<char[]> long_text;
    if (size > sizeof short_text)
        long_text.reset(new (std::nothrow) char[size]);
    if (long_text)
        std::vsnprintf(long_text.get(), size, format, again);
    va_end(again);
    if (size > 0)
        print(long_text ? long_text.get() : short_text);
}

// The id of the process that traces the calling thread, 0 where there is none.
int tracer()
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> status(std::fopen("/proc/thread-self/status", "re"),
                                                                  std::fclose);
    int id = 0;
    char line[128];
    while (status && std::fgets(line, sizeof line, status.get())) {
        if (std::sscanf(line, "TracerPid: %d", &id) == 1)
            break;
    }
    return id;
}

#ifdef CLOCK_MONOTONIC_COARSE
constexpr clockid_t cheap_clock = CLOCK_MONOTONIC_COARSE; // read without a system call, exact to some milliseconds
#else
constexpr clockid_t cheap_clock = CLOCK_MONOTONIC;
#endif

int64_t milliseconds_now()
{
    timespec now = {};
    clock_gettime(cheap_clock, &now);
    return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

// Asking takes some 20 us, so a "no" holds for an eighth of a second. A "yes" holds for no time at all: SIGTRAP ends a
// program whose debugger has left.
bool is_traced()
{
    constexpr int64_t no_holds_for = 125;
    [[gnu::tls_model("initial-exec")]] static constinit thread_local int64_t ask_from = 0;
    const int64_t now = milliseconds_now();
    if (now < ask_from)
        return false;
    if (tracer() != 0)
        return true;
    ask_from = now + no_holds_for;
    return false;
}

} // namespace

mova_text_fn mova_set_debug_print(mova_text_fn print)
{
    return debug_print.exchange(print, std::memory_order_acq_rel);
}

mova_text_fn mova_set_message(mova_text_fn show)
{
    return show_message.exchange(show, std::memory_order_acq_rel);
}

void mova_dprintf(const char *format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    if (const mova_text_fn print = debug_print.load(std::memory_order_acquire))
        print_formatted(print, format, arguments);
    else
        std::vfprintf(stderr, format, arguments);
    va_end(arguments);
}

void debug_break()
{
    if (is_traced())
        std::raise(SIGTRAP);
}

void MSG_Message(const char *text)
{
    if (const mova_text_fn show = show_message.load(std::memory_order_acquire))
        show(text);
    else
        std::fprintf(stderr, "%s\n", text);
}
