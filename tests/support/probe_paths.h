/* The ways in which this machine can search the keys of a hash table. */
#ifndef MOVA_TESTS_SUPPORT_PROBE_PATHS_H
#define MOVA_TESTS_SUPPORT_PROBE_PATHS_H

#include <mova/hash/internal/probe.h>

#include <vector>

namespace mova::test {

enum class probe_path { plain, wide };

#if defined(__x86_64__) && defined(__LP64__)

/* The library goes the plain way as long as one of these that says so is in scope. */
class taken_path {
public:
    explicit taken_path(probe_path path) : had_avx2_(hash::has_avx2)
    {
        hash::has_avx2 = had_avx2_ && path == probe_path::wide;
    }
    ~taken_path() { hash::has_avx2 = had_avx2_; }

    taken_path(const taken_path &) = delete;
    taken_path &operator=(const taken_path &) = delete;

private:
    bool had_avx2_;
};

inline std::vector<probe_path> probe_paths()
{
    return hash::has_avx2 ? std::vector{probe_path::plain, probe_path::wide} : std::vector{probe_path::plain};
}

#else

class taken_path {
public:
    explicit taken_path(probe_path) {}
};

inline std::vector<probe_path> probe_paths()
{
    return {probe_path::plain};
}

#endif

} // namespace mova::test

#endif
