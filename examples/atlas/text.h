/* SPDX-License-Identifier: MIT */
#ifndef ATLAS_TEXT_H
#define ATLAS_TEXT_H

#include <string>
#include <string_view>

namespace atlas {

/* Returns the text as a terminal may be given it: one plain line, written from one side to the other. A question mark stands
   for each control character, of 7 or 8 bits, for each that breaks lines or turns the direction, and for each byte that is
   no UTF-8. */
std::string printable(std::string_view text);

} // namespace atlas

#endif
