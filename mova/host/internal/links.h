/* SPDX-License-Identifier: MIT */
/* Links in a list that has a first node and knows no last. */
#ifndef MOVA_HOST_INTERNAL_LINKS_H
#define MOVA_HOST_INTERNAL_LINKS_H

namespace mova {

template <class T>
void link(T *&first, T *node)
{
    node->prev = nullptr;
    node->next = first;
    if (first)
        first->prev = node;
    first = node;
}

template <class T>
void unlink(T *&first, T *node)
{
    (node->prev ? node->prev->next : first) = node->next;
    if (node->next)
        node->next->prev = node->prev;
}

} // namespace mova

#endif
