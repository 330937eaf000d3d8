/* SPDX-License-Identifier: MIT */
/* Reversing words, many at a time. */
#ifndef MOVA_ARRAYS_INTERNAL_REVERSE_WORDS_H
#define MOVA_ARRAYS_INTERNAL_REVERSE_WORDS_H

#include <mova/frame/internal/vector_code.h>

#include <cstddef>
#include <cstring>
#include <utility>

namespace mova {

/* Works inwards from both ends, `Width` bytes at a time and then a word at a time. */
template <class Word, size_t Width>
class word_reverser {
public:
    [[gnu::always_inline]] static void reverse(char *data, size_t count)
    {
        char *low = data, *high = data + count * sizeof(Word);
        exchange<vector>(low, high);
        exchange<Word>(low, high);
    }

private:
    using vector [[gnu::vector_size(Width)]] = Word;

    template <class Piece>
    [[gnu::always_inline]] static void exchange(char *&low, char *&high)
    {
        for (; static_cast<size_t>(high - low) >= 2 * sizeof(Piece); low += sizeof(Piece)) {
            high -= sizeof(Piece);
            Piece from_low, from_high;
            std::memcpy(&from_low, low, sizeof(Piece));
            std::memcpy(&from_high, high, sizeof(Piece));
            mirror(from_low, std::make_index_sequence<sizeof(Piece) / sizeof(Word)>());
            mirror(from_high, std::make_index_sequence<sizeof(Piece) / sizeof(Word)>());
            std::memcpy(low, &from_high, sizeof(Piece));
            std::memcpy(high, &from_low, sizeof(Piece));
        }
    }

    template <class Piece, size_t... Index>
    [[gnu::always_inline]] static void mirror(Piece &words, std::index_sequence<Index...>)
    {
        constexpr size_t count = sizeof...(Index);
        if constexpr (count > 1)
#if __has_builtin(__builtin_shufflevector)
            words = __builtin_shufflevector(words, words, (count - 1 - Index)...);
#else /* gcc 11 */
            words = __builtin_shuffle(words, Piece{static_cast<Word>(count - 1 - Index)...});
#endif
    }
};

template <class Word>
void reverse_words_plainly(char *data, size_t count)
{
    word_reverser<Word, 16>::reverse(data, count);
}

template <class Word>
MOVA_AVX2 void reverse_words_by_avx2(char *data, size_t count)
{
    word_reverser<Word, 32>::reverse(data, count);
}

template <class Word>
void reverse_words(char *data, size_t count)
{
    use_avx2 ? reverse_words_by_avx2<Word>(data, count) : reverse_words_plainly<Word>(data, count);
}

} // namespace mova

#endif
