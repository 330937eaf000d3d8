/* SPDX-License-Identifier: MIT */
#include "countries.h"

#include <cctype>
#include <cinttypes>
#include <numeric>
#include <utility>

#include <mova/cxx/hash_table.h>
#include <mova/frame/host.h>

#include "colours.h"
#include "shapes.h"

namespace atlas {

/* ---- by name ---- */

NameIndex index_by_name(const Topology &topology)
{
    NameIndex index;
    for (const Country *country : topology.countries) {
        if (!country->name.empty())
            index.insert(*country);
    }
    return index;
}

/* How many letters have to be put in, left out or exchanged to make one name of the other, upper and lower case alike. Entry i
   of the row is that of the first i letters of `a` and as many of `b` as were looked at. */
static std::size_t distance(std::string_view a, std::string_view b)
{
    const auto lower = [](char letter) { return std::tolower(static_cast<unsigned char>(letter)); };
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

/* Returns the name that was probably meant: one letter in three may be wrong, or the rest may be missing. */
static std::string near_miss(const Topology &topology, std::string_view name)
{
    std::string_view nearest;
    std::size_t least = name.size() < 3 || name.size() > 64 ? 0 : name.size() / 3 + 1;
    for (const Country *country : topology.countries) {
        const std::string_view tried = country->name;
        const std::size_t shorter = std::min(name.size(), tried.size());
        std::size_t away = std::max(name.size(), tried.size()) - shorter;
        if (least > 1 && tried.size() > shorter && distance(name, tried.substr(0, shorter)) == 0)
            away = 1;
        else if (away < least)
            away = distance(name, tried);
        if (away < least) {
            least = away;
            nearest = tried;
        }
    }
    return std::string(nearest);
}

std::size_t select_countries(Topology &topology, const std::vector<std::string> &names)
{
    const NameIndex index = index_by_name(topology);
    mova::hash_table<const Country *, bool> kept;
    std::size_t looked_at = 0;
    for (const std::string &name : names) {
        const auto named = index.equal_range(name);
        if (named.empty()) {
            const std::string meant = near_miss(topology, name);
            throw Error("no country is named " + name + (meant.empty() ? "" : ": did you mean " + meant + "?"));
        }
        if (kept.contains(&*named.begin()))
            continue; /* a name that was given before */
        for (const Country &country : named) {
            kept.set(&country, true);
            ++looked_at;
        }
    }
    topology.countries.remove_if([&](const Country *country) { return !kept.contains(country); });
    find_borders(topology);
    return looked_at;
}

/* ---- by area ---- */

static Summary summarise(const Country &country, std::int32_t number)
{
    Summary summary = {{0, number}, &country, nullptr};
    std::int64_t largest = -1;
    for (const Polygon *polygon : country.polygons) {
        const std::int64_t covered = area(*polygon);
        summary.rank.area += covered;
        if (covered > std::exchange(largest, std::max(largest, covered)))
            summary.largest = polygon;
    }
    return summary;
}

AreaIndex index_by_area(const Topology &topology)
{
    AreaIndex index;
    std::int32_t number = 0;
    for (const Country *country : topology.countries)
        index.insert(mova::make_item<Summary>(summarise(*country, number++)));
    return index;
}

void print(const AreaIndex &index)
{
    index.print([](const Summary &summary) {
        const std::string name = printable(summary.country->name);
        mova_dprintf("%s, %" PRId64 " km2", name.empty() ? "(no name)" : name.c_str(), summary.rank.area);
    });
}

} // namespace atlas
