/* SPDX-License-Identifier: MIT */
// The typed layer takes C++20 (-std=c++20)
#include <mova/cxx.h>
