#include <mova/hash/internal/probe.h>

#if defined(__x86_64__) && defined(__LP64__)

#include <bit>

#include <immintrin.h>

#include <mova/frame/internal/cpu.h>

namespace mova::hash {
namespace {

/* Up to here (8 MiB of keys) it is quicker to look at eight keys from the slot on, which may take two cache lines, than
   to guess wrong whether the rest of the slot's own line will do. */
constexpr size_t near_slots = size_t{1} << 20;

/* One bit for each of the eight keys at `keys` that is 0 or `key`. */
MOVA_AVX2 inline uint32_t hits_among_eight(const mova_word *keys, __m256i key)
{
    const __m256i empty = _mm256_setzero_si256();
    const __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(keys));
    const __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(keys + 4));
    const __m256i low_hits = _mm256_or_si256(_mm256_cmpeq_epi64(low, key), _mm256_cmpeq_epi64(low, empty));
    const __m256i high_hits = _mm256_or_si256(_mm256_cmpeq_epi64(high, key), _mm256_cmpeq_epi64(high, empty));
    return static_cast<uint32_t>(_mm256_movemask_pd(_mm256_castsi256_pd(low_hits)) |
                                 _mm256_movemask_pd(_mm256_castsi256_pd(high_hits)) << 4);
}

} // namespace

bool has_avx2 = [] {
    __builtin_cpu_init(); /* which nothing promises to have happened while the library is loaded */
    return mova::has_avx2();
}();

MOVA_AVX2 size_t probe_by_eight(const mova_word *keys, size_t mask, size_t slot, mova_word key)
{
    const __m256i sought = _mm256_set1_epi64x(key);
    if (mask < near_slots && slot + 8 <= mask + 1) {
        const uint32_t near_hits = hits_among_eight(keys + slot, sought);
        if (near_hits)
            return slot + static_cast<size_t>(std::countr_zero(near_hits));
    }
    size_t group = slot & ~size_t{7};
    uint32_t hits = hits_among_eight(keys + group, sought) & (0xFFu << (slot & 7));
    while (!hits) {
        group = (group + 8) & mask;
        hits = hits_among_eight(keys + group, sought);
    }
    return group + static_cast<size_t>(std::countr_zero(hits));
}

} // namespace mova::hash

#endif
