/* SPDX-License-Identifier: MIT */
// mova::balanced_set: the comparison does not take what is placed or looked for, then an item
#include <mova/cxx/balanced_tree.h>
struct country {
    int area;
};
bool is_new(mova::balanced_set<country> &countries, country &added)
{
    return countries.insert(added).second && countries.contains(added);
}
