/* SPDX-License-Identifier: MIT */
/* Locks that cost nothing while the process has a single thread, and that clang sees to be held where they must be. */
#ifndef MOVA_HOST_INTERNAL_LOCKS_H
#define MOVA_HOST_INTERNAL_LOCKS_H

#include <mutex>

#include <mova/frame/internal/single_threaded.h>

/* An attribute of clang's thread-safety analysis; other compilers have none. */
#if defined __clang__
#define MOVA_ANNOTATED(...) __attribute__((__VA_ARGS__))
#else
#define MOVA_ANNOTATED(...)
#endif

namespace mova {

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
