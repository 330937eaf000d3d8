/* SPDX-License-Identifier: MIT */
#include "select.h"

#include <algorithm>
#include <numeric>
#include <set>
#include <string_view>

#include <mova/cxx/hash_table.h>
#include <mova/cxx/sorted_numbers.h>

#include "borders.h"
#include "error.h"
#include "indices.h"

namespace atlas {

static char lower(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/* How many letters have to be put in, left out or exchanged to make one name of the other, upper and lower case alike. The
   row of a table: its entry i is the distance of the first i letters of `a` from as many of `b` as were looked at. */
static std::size_t distance(std::string_view a, std::string_view b)
{
    std::vector<std::size_t> row(a.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (const char each : b) {
        std::size_t before = row[0]++;
        for (std::size_t i = 0; i < a.size(); ++i) {
            const std::size_t exchanged = before + (lower(a[i]) != lower(each));
            before = row[i + 1];
            row[i + 1] = std::min({exchanged, before + 1, row[i] + 1});
        }
    }
    return row.back();
}

/* Names that differ by so much or more are not compared any further. */
static std::size_t distance_below(std::size_t limit, std::string_view name, std::string_view tried)
{
    const std::size_t shorter = std::min(name.size(), tried.size()), longer = std::max(name.size(), tried.size());
    if (name.size() < tried.size() && distance(name, tried.substr(0, name.size())) == 0)
        return 1; /* the rest was left out */
    return longer - shorter < limit ? distance(name, tried) : limit;
}

/* Returns the name that was probably meant: one letter in three may be wrong, or the rest may be missing. */
static std::string_view near_miss(const Topology &topology, std::string_view name)
{
    std::string_view nearest;
    if (name.size() < 3 || name.size() > 64)
        return nearest;
    std::size_t least = name.size() / 3 + 1;
    GL_iterator countries = GL_all_items(topology.countries.get());
    while (const Country *country = next_record<Country>(countries)) {
        const std::size_t away = distance_below(least, name, country->name.view());
        if (away < least) {
            least = away;
            nearest = country->name.view();
        }
    }
    return nearest;
}

[[noreturn]] static void refuse(const Topology &topology, const std::string &name)
{
    const std::string_view meant = near_miss(topology, name);
    throw Error("no country is named " + name + (meant.empty() ? "" : ": did you mean " + std::string(meant) + "?"));
}

/* Requires names that differ, so that no country is found twice. */
static std::vector<const Country *> named(const Topology &topology, const std::vector<std::string> &names)
{
    const NameIndex index(topology);
    std::vector<const Country *> all;
    for (const std::string &name : names) {
        const std::vector<const Country *> found = index.find(name);
        if (found.empty())
            refuse(topology, name);
        all.insert(all.end(), found.begin(), found.end());
    }
    return all;
}

/* The numbers of the countries to keep: their places in the list, from 0 on. */
static mova::sorted_numbers numbers_of(const Topology &topology, const std::vector<const Country *> &kept)
{
    mova::hash_table<const Country *, bool> is_kept;
    for (const Country *country : kept)
        is_kept.set(country, true);
    mova::sorted_numbers numbers(static_cast<std::int32_t>(kept.size()));
    std::int32_t number = 0;
    GL_iterator countries = GL_all_items(topology.countries.get());
    for (; const Country *country = next_record<Country>(countries); ++number) {
        if (is_kept.find(country))
            numbers.add(number);
    }
    return numbers;
}

static void remove_others(Topology &topology, const mova::sorted_numbers &kept)
{
    std::int32_t number = 0;
    GL_iterator countries = GL_all_items(topology.countries.get());
    for (GL_node *position; GL_next_position(&countries, &position);) {
        if (!kept.contains(number++))
            topology.countries.remove(position);
    }
}

/* Each name once, in the order that they were given in. */
static std::vector<std::string> without_repeats(const std::vector<std::string> &names)
{
    std::set<std::string_view> seen;
    std::vector<std::string> once;
    for (const std::string &name : names) {
        if (seen.insert(name).second)
            once.push_back(name);
    }
    return once;
}
void select_countries(Topology &topology, const std::vector<std::string> &names)
{
    remove_others(topology, numbers_of(topology, named(topology, without_repeats(names))));
    find_borders(topology);
}

} // namespace atlas
