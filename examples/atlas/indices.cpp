/* SPDX-License-Identifier: MIT */
#include "indices.h"

#include <cinttypes>
#include <compare>
#include <new>

#include <mova/frame/host.h>

#include "area.h"

namespace atlas {

static std::int32_t sign(std::strong_ordering order)
{
    return order < 0 ? -1 : order > 0;
}

/* ---- by name ---- */

static std::int32_t compare_names(void *a, void *b)
{
    return sign(static_cast<const Country *>(a)->name.view() <=> static_cast<const Country *>(b)->name.view());
}

NameIndex::NameIndex(const Topology &topology) : tree_(GT_create_with_dupl_allowed(compare_names))
{
    GL_iterator countries = GL_all_items(topology.countries.get());
    while (Country *country = next_record<Country>(countries)) {
        if (!country->name.empty())
            GT_insert_item(tree_, country);
    }
}

/* The search finds any one of several that compare equal. A position is a node, and its links may be read. */
std::vector<const Country *> NameIndex::find(std::string_view name) const
{
    Country wanted;
    wanted.name = Text(name);
    std::vector<const Country *> found;
    tree_item *position;
    if (!GT_search_item(tree_, &wanted, &position))
        return found;
    while (position->prev && compare_names(&wanted, position->prev->item) == 0)
        position = position->prev;
    for (; position && compare_names(&wanted, position->item) == 0; position = position->next)
        found.push_back(static_cast<const Country *>(position->item));
    return found;
}

/* ---- by area ---- */

std::int32_t compare_areas(const Summary &a, const Summary &b)
{
    const std::strong_ordering order = b.area <=> a.area;
    return sign(order != 0 ? order : a.number <=> b.number);
}

static std::int32_t compare_summaries(void *a, void *b)
{
    return compare_areas(*static_cast<const Summary *>(a), *static_cast<const Summary *>(b));
}

static Summary summarise(const Country &country, std::int32_t number)
{
    Summary summary = {&country, number, 0, nullptr};
    std::int64_t largest = -1;
    GL_iterator polygons = GL_all_items(country.polygons.get());
    while (const Polygon *polygon = next_record<Polygon>(polygons)) {
        const std::int64_t covered = area(*polygon);
        summary.area += covered;
        if (covered > largest) {
            largest = covered;
            summary.largest = polygon;
        }
    }
    return summary;
}

AreaIndex::AreaIndex(const Topology &topology) : tree_(GT_create_with_dupl_not_allowed(compare_summaries))
{
    std::int32_t number = 0;
    GL_iterator countries = GL_all_items(topology.countries.get());
    while (const Country *country = next_record<Country>(countries)) {
        const Summary summary = summarise(*country, number++);
        GT_insert_item(tree_, new (MM_alloc_item(sizeof summary)) Summary(summary));
    }
}

static void print_summary(void *item)
{
    const Summary *summary = static_cast<const Summary *>(item);
    const std::string name = printable(summary->country->name.view());
    mova_dprintf("%s, %" PRId64 " km2", name.empty() ? "(no name)" : name.c_str(), summary->area);
}

void AreaIndex::print() const
{
    GT_print_tree(tree_, print_summary);
}

} // namespace atlas
