/* SPDX-License-Identifier: MIT */
/* What fits into a machine word, and how it is put there: pointers, integers, enumerations, bool. */
#ifndef MOVA_CXX_WORD_H
#define MOVA_CXX_WORD_H

#include <concepts>
#include <type_traits>

#include <mova/frame/host.h>

namespace mova {

/* What fits into a machine word. */
template <class T>
concept word_sized = (std::is_pointer_v<T> || std::integral<T> || std::is_enum_v<T>)&&sizeof(T) <= sizeof(mova_word);

/* Makes a word of a value. It and the next are also compiled for what is none of these, which the classes refuse with a text
   of theirs: nothing more is to be said. */
template <class T>
mova_word to_word(T value) noexcept
{
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<mova_word>(value);
    else if constexpr (word_sized<T>)
        return static_cast<mova_word>(value);
    else
        __builtin_unreachable();
}

/* The value that to_word() made a word of. */
template <class T>
T from_word(mova_word word) noexcept
{
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<T>(word);
    else if constexpr (word_sized<T>)
        return static_cast<T>(word);
    else
        __builtin_unreachable();
}

} // namespace mova

#endif
