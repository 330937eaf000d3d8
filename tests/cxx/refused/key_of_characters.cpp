/* SPDX-License-Identifier: MIT */
// mova::hash_table: a key is a pointer, an integer or an enumeration, no wider than a word: take mova::keyed_table
#include <mova/cxx/hash_table.h>
#include <string>
int sum()
{
    mova::hash_table<std::string, int> visits;
    visits.set("France", 3);
    int all = visits.contains("Norway");
    for (const auto &[name, count] : visits)
        all += count;
    return all;
}
