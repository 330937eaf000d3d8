/* SPDX-License-Identifier: MIT */
/* Whole files: read at once, replaced at once. */
#ifndef ATLAS_FILE_H
#define ATLAS_FILE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "messages.h"

namespace atlas {

/* As large a map as makes sense, and no more than memory holds once it is decoded. */
constexpr std::size_t largest_file = std::size_t{64} << 20;

/* Returns what the file holds. Throws Error where it cannot be read or is larger than `largest_file`. */
std::string read_file(const std::string &path, const Progress &progress);

/* Gives the file new contents, in one step: whoever looks sees the old file or the whole new one. Throws Error
   where that fails, and leaves what was there before. */
void replace_file(const std::string &path, const std::vector<std::uint8_t> &contents);

} // namespace atlas

#endif
