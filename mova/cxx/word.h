/* SPDX-License-Identifier: MIT */
/* What fits into a machine word, and how it is put there: pointers, integers, enumerations, bool. */
#ifndef MOVA_CXX_WORD_H
#define MOVA_CXX_WORD_H

#include <concepts>
#include <type_traits>

#include <mova/frame/host.h>

namespace mova {

template <class T>
concept word_sized = (std::is_pointer_v<T> || std::integral<T> || std::is_enum_v<T>)&&sizeof(T) <= sizeof(mova_word);

template <class T>
mova_word to_word(T value) noexcept
{
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<mova_word>(value);
    else
        return static_cast<mova_word>(value);
}

template <class T>
T from_word(mova_word word) noexcept
{
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<T>(word);
    else
        return static_cast<T>(word);
}

} // namespace mova

#endif
