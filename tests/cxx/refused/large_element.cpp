/* SPDX-License-Identifier: MIT */
// mova::element_list: an element has at most 65535 bytes: take mova::pointer_list
#include <mova/cxx/element_list.h>
struct page {
    char bytes[65536];
};
mova::element_list<page> pages;
