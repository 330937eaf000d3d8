/* SPDX-License-Identifier: MIT */
#ifndef MOVA_TESTS_MODEL_HASH_KEYS_H
#define MOVA_TESTS_MODEL_HASH_KEYS_H

#include <mova/frame/host.h>

#include <array>
#include <cstdint>

namespace mova::test {

/* Turns a small number into a key. Some shapes make key 0 of number 0. */
using key_shape = mova_word (*)(mova_word number);

inline mova_word dense_key(mova_word number)
{
    return number;
}

inline mova_word negative_key(mova_word number)
{
    return -number;
}

inline mova_word aligned_key(mova_word number)
{
    return 0x10000 + 16 * number;
}

inline mova_word page_key(mova_word number)
{
    return 4096 * number;
}

/* Few homes, the last two slots of every small table among them: long runs that wrap. */
inline mova_word crowded_key(mova_word number)
{
    return number / 4 * 1024 - number % 4;
}

inline mova_word scattered_key(mova_word number)
{
    return static_cast<mova_word>(static_cast<uintptr_t>(number) * 2654435761u);
}

/* Keys that differ above their 32 low bits alone, where a word has such bits. */
inline mova_word high_key(mova_word number)
{
    auto bits = static_cast<uint64_t>(number);
    return static_cast<mova_word>((bits % 16) << 32 | bits / 16);
}

inline constexpr std::array<key_shape, 7> key_shapes = {dense_key,   negative_key,  aligned_key, page_key,
                                                        crowded_key, scattered_key, high_key};

} // namespace mova::test

#endif
