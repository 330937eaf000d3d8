/* SPDX-License-Identifier: MIT */
// mova::colour_table: what is told of changes must have no state, for the table keeps it as a plain function
#include <mova/cxx/colour_table.h>
struct counted {
    int *changes;
    void operator()(std::int32_t, mova::colour) const { ++*changes; }
};
void make()
{
    mova::colour_table::make<counted>(256);
}
