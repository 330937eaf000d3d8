/* SPDX-License-Identifier: MIT */
// give the record a move constructor that is noexcept, or store std::unique_ptr to it
#include <mova/cxx/keyed_table.h>
struct country {
    int number;
    country(country &&other) : number(other.number) {}
};
mova::keyed_table<country, &country::number> countries;
