/* SPDX-License-Identifier: MIT */
#ifndef MOVA_TESTS_SUPPORT_PLAIN_CODE_H
#define MOVA_TESTS_SUPPORT_PLAIN_CODE_H

#include <mova/frame/internal/vector_code.h>

#include <type_traits>

namespace mova::test {

/* As long as one of these that says so is in scope, the library takes its plain bodies, those for the processor's vectors
   never. Where there are only plain ones it does nothing. */
class plain_code {
public:
    explicit plain_code(bool plain) { set(use_avx2, was_used_ && !plain); }
    ~plain_code() { set(use_avx2, was_used_); }

    plain_code(const plain_code &) = delete;
    plain_code &operator=(const plain_code &) = delete;

private:
    template <class Flag>
    static void set(Flag &flag, bool to)
    {
        if constexpr (!std::is_const_v<Flag>)
            flag = to;
    }

    const bool was_used_ = use_avx2;
};

} // namespace mova::test

#endif
