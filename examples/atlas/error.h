/* SPDX-License-Identifier: MIT */
/* What is wrong with the input, the output or the command line: one line of text for people. It does not say which
   file it is about; whoever reports it knows. */
#ifndef ATLAS_ERROR_H
#define ATLAS_ERROR_H

#include <stdexcept>

namespace atlas {

class Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace atlas

#endif
