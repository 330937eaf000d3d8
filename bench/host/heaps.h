/* SPDX-License-Identifier: MIT */
/* The allocators that take turns in the memory rows: ours, and those that a program would use instead. */
#ifndef MOVA_BENCH_HOST_HEAPS_H
#define MOVA_BENCH_HOST_HEAPS_H

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include <dlfcn.h>
#include <unistd.h>

#include <bench/scoreboard.h>
#include <mova/frame/host.h>

namespace heaps {

struct mova_heap {
    static void *take(size_t size) { return MM_alloc_item(size); }
    static void give(void *block, size_t size) { MM_dealloc_item(block, size); }
};

struct glibc_heap {
    static void *take(size_t size) { return std::malloc(size); }
    static void give(void *block, size_t) { std::free(block); }
};

/* Loaded at run time and for itself: a program that is linked with it has its malloc in place of glibc's. */
struct mimalloc_heap {
    static void *take(size_t size) { return allocate(size); }
    static void give(void *block, size_t) { release(block); }
    static bool is_there() { return allocate && release; }

private:
    static inline void *library = dlopen("libmimalloc.so.2", RTLD_NOW | RTLD_LOCAL);
    template <class F>
    static F *symbol(const char *name)
    {
        return library ? reinterpret_cast<F *>(dlsym(library, name)) : nullptr;
    }
    static inline auto allocate = symbol<void *(size_t)>("mi_malloc");
    static inline auto release = symbol<void(void *)>("mi_free");
};

/* Bytes of memory, not of address space, that the process holds, without what comes from files. */
inline double resident_bytes()
{
    std::FILE *file = std::fopen("/proc/self/statm", "r");
    long resident = 0, shared = 0;
    bool read = file && std::fscanf(file, "%*d %ld %ld", &resident, &shared) == 2;
    if (file)
        std::fclose(file);
    return read ? static_cast<double>(resident - shared) * static_cast<double>(sysconf(_SC_PAGESIZE)) : std::nan("");
}

/* How many times as fast as each peer we are to be; 0 is no target. */
struct speed_targets {
    double glibc, mimalloc;
};

/* Registers a timed row. `work` takes a heap, for its type, and the state. */
template <class Work>
bool add_timed(const char *id, const std::string &workload, double operations, speed_targets wanted, Work work)
{
    auto with = [work]<class Heap>(Heap heap) -> scoreboard::timed_work {
        return [=](benchmark::State &state) { work(heap, state); };
    };
    return scoreboard::add_timed(
        {id,
         workload,
         operations,
         with(mova_heap{}),
         {{"glibc", with(glibc_heap{}), wanted.glibc},
          {"mimalloc", mimalloc_heap::is_there() ? with(mimalloc_heap{}) : nullptr, wanted.mimalloc}}});
}

/* Registers a row whose figure `work` returns; it takes a heap, for its type. */
template <class Work>
bool add_measured(const char *id, const std::string &workload, const std::string &unit,
                  scoreboard::measured_target wanted, Work work)
{
    auto with = [work]<class Heap>(Heap heap) -> scoreboard::measured_work { return [=] { return work(heap); }; };
    return scoreboard::add_measured(
        {id,
         workload,
         unit,
         with(mova_heap{}),
         wanted,
         {{"glibc", with(glibc_heap{})}, {"mimalloc", mimalloc_heap::is_there() ? with(mimalloc_heap{}) : nullptr}}});
}

} // namespace heaps

#endif
