#ifndef MOVA_FRAME_INTERNAL_CPU_H
#define MOVA_FRAME_INTERNAL_CPU_H

/* Marks a function that is compiled for AVX2, whatever the rest is compiled for. Where there is no such thing the mark
   does not exist. */
#if defined(__x86_64__) || defined(__i386__)
#define MOVA_AVX2 [[gnu::target("avx2")]]

namespace mova {

/* Whether this processor can run such functions. */
inline bool has_avx2()
{
    return __builtin_cpu_supports("avx2") != 0;
}

} // namespace mova
#endif

#endif
