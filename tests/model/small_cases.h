/* SPDX-License-Identifier: MIT */
/* Tries every operation from every small state of a family.

   An interpreter draws numbers and makes operations of them. Here each number that it draws is a choice, and all choices are
   tried (choice_script). What an operation leaves is described by the interpreter; what is described as before is known. So
   states are found, the nearest to the empty container first, until there are no more but those that are too large to go on
   from:

       start ──append 0──▶ (0) ──append 1──▶ (0 1) ──make empty──▶ start: known
             └─append 1──▶ (1) …

   A state is made again by the operations that led to it first. After each step the interpreter compares all that can be
   seen with its model, and everything is released and looked for leaks each time a state is left. */
#ifndef MOVA_TESTS_MODEL_SMALL_CASES_H
#define MOVA_TESTS_MODEL_SMALL_CASES_H

#include "model.h"

#include <cstdint>

namespace mova::test {

/* How many states there are within the bound, and how many operations were tried from them. */
struct small_cases {
    uint64_t states, steps;

    bool operator==(const small_cases &) const = default;
};

/* Throws mismatch at the first difference, having printed each call that leads to it. */
small_cases try_small_cases(const model &tried, std::size_t most);

} // namespace mova::test

#endif
