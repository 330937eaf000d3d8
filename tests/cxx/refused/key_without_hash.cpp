/* SPDX-License-Identifier: MIT */
// mova::keyed_table: such a key cannot be looked for: give the table a class whose operator() const takes the key
#include <mova/cxx/keyed_table.h>
struct square {
    struct place {
        int row, column;
    } at;
};
bool has_origin(mova::keyed_table<square, &square::at> &squares)
{
    return squares.insert({{0, 0}}).second || squares.contains(square::place{0, 0});
}
