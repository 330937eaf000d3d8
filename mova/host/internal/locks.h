/* SPDX-License-Identifier: MIT */
/* Locks that cost nothing while the process has a single thread, and that clang sees to be held where they must be. */
#ifndef MOVA_HOST_INTERNAL_LOCKS_H
#define MOVA_HOST_INTERNAL_LOCKS_H

#include <mutex>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

/* An attribute of clang's thread-safety analysis; other compilers have none. */
#if defined __clang__
#define MOVA_ANNOTATED(...) __attribute__((__VA_ARGS__))
#else
#define MOVA_ANNOTATED(...)
#endif

namespace mova {

inline bool single_threaded()
{
#if __has_include(<sys/single_threaded.h>)
    return __libc_single_threaded;
#else
    return false;
#endif
}

class MOVA_ANNOTATED(capability("lock")) mutex {
public:
    void lock() MOVA_ANNOTATED(acquire_capability()) { mutex_.lock(); }
    void unlock() MOVA_ANNOTATED(release_capability()) { mutex_.unlock(); }

private:
    std::mutex mutex_;
};

/* Holds a lock for as long as it lives. */
class MOVA_ANNOTATED(scoped_lockable) guard {
public:
    explicit guard(mutex &lock) MOVA_ANNOTATED(acquire_capability(lock), no_thread_safety_analysis)
        : held_(single_threaded() ? nullptr : &lock)
    {
        if (held_)
            held_->lock();
    }

    ~guard() MOVA_ANNOTATED(release_capability(), no_thread_safety_analysis)
    {
        if (held_)
            held_->unlock();
    }

    guard(const guard &) = delete;
    guard &operator=(const guard &) = delete;

private:
    mutex *held_;
};

} // namespace mova

#endif
