/* SPDX-License-Identifier: MIT */
#include <mova/frame/internal/vector_code.h>

#if defined(__x86_64__) || defined(__i386__)

bool mova::use_avx2 = [] {
    __builtin_cpu_init(); /* which nothing promises to have happened while the library is loaded */
    return __builtin_cpu_supports("avx2") != 0;
}();

#endif
