/* SPDX-License-Identifier: MIT */
// mova::balanced_set: the comparison does not take what is placed or looked for, then an item
#include <mova/cxx/balanced_tree.h>
#include <string>
struct country {
    std::string name;
};
struct by_name {
    bool operator()(const country &a, const country &b) const { return a.name < b.name; }
};
bool has_france(const mova::balanced_set<country, by_name> &countries)
{
    return countries.contains("France");
}
