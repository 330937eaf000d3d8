/* SPDX-License-Identifier: MIT */
#ifndef MOVA_FRAME_INTERNAL_COPY_ELEMENT_H
#define MOVA_FRAME_INTERNAL_COPY_ELEMENT_H

#include <cstddef>
#include <cstring>

namespace mova {

/* Copies one element of a container. A call of memcpy takes longer than the copy of a small element. Pointers to elements
   of size 0 may be null. */
inline void copy_element(void *to, const void *from, size_t size)
{
    if (size == 8)
        std::memcpy(to, from, 8);
    else if (size == 4)
        std::memcpy(to, from, 4);
    else if (size == 16)
        std::memcpy(to, from, 16);
    else if (size != 0)
        std::memcpy(to, from, size);
}

} // namespace mova

#endif
