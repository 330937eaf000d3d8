/* SPDX-License-Identifier: MIT */
#ifndef ATLAS_PNG_FILE_H
#define ATLAS_PNG_FILE_H

#include <cstddef>
#include <span>
#include <string>

#include "colours.h"
#include "messages.h"
#include "picture.h"

namespace atlas {

/* Writes the picture as a PNG file whose colours are those of `colours`, and returns how many bytes it takes.
   Throws Error where it cannot be written, and then leaves what was there before. */
std::size_t write_png(const std::string &path, Picture &picture, std::span<const Colour> colours,
                      const Progress &progress);

} // namespace atlas

#endif
