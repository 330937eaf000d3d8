/* Locks that cost nothing while the process has a single thread. */
#ifndef MOVA_HOST_INTERNAL_LOCKS_H
#define MOVA_HOST_INTERNAL_LOCKS_H

#include <mutex>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
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

/* Holds the lock for as long as what it returns lives. */
inline std::unique_lock<std::mutex> locked(std::mutex &lock)
{
    return single_threaded() ? std::unique_lock<std::mutex>() : std::unique_lock(lock);
}

} // namespace mova

#endif
