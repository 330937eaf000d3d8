#include "select.h"

#include <algorithm>
#include <numeric>
#include <string_view>

#include <mova/arrays/id_lookup_table.h>
#include <mova/arrays/sorted_number_array.h>

#include "borders.h"
#include "error.h"
#include "indices.h"

namespace atlas {

namespace {

/* Ids for all countries: those of the topology's list, in its order, from 1 on. */
class CountryIds {
public:
    explicit CountryIds(const Topology &topology)
    {
        GL_iterator countries = GL_all_items(topology.countries.get());
        while (Country *country = next_record<Country>(countries))
            io_lut_add(table_, country);
    }
    ~CountryIds() { io_lut_release(&table_); }
    CountryIds(const CountryIds &) = delete;
    CountryIds &operator=(const CountryIds &) = delete;

    /* The country's place in the list, from 0 on. */
    std::int32_t number_of(const Country *country) const { return io_lut_get_id(table_, country) - 1; }

private:
    DA_array *table_ = io_lut_create();
};

/* The numbers of the countries to keep. */
class Selection {
public:
    Selection() = default;
    ~Selection() { DA_release(numbers_); }
    Selection(const Selection &) = delete;
    Selection &operator=(const Selection &) = delete;

    DA_array *get() { return numbers_; }

private:
    DA_array *numbers_ = DA_create(sizeof(std::int32_t), 64);
};

} // namespace

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

static void add_named(Selection &selection, const Topology &topology, const NameIndex &index, const CountryIds &ids,
                      const std::string &name)
{
    const std::vector<const Country *> found = index.find(name);
    if (found.empty())
        refuse(topology, name);
    for (const Country *country : found)
        SA_add_number(selection.get(), ids.number_of(country));
}

/* Each removal moves the countries after it up by one, and their numbers with them. */
static void remove_others(Selection &selection, Topology &topology)
{
    std::int32_t number = 0;
    GL_iterator countries = GL_all_items(topology.countries.get());
    for (GL_node *position; GL_next_position(&countries, &position);) {
        if (SA_check_number(selection.get(), number)) {
            ++number;
        } else {
            topology.countries.remove(position);
            SA_adapt_for_remove(selection.get(), number);
        }
    }
}

void select_countries(Topology &topology, const std::vector<std::string> &names)
{
    Selection selection;
    const NameIndex index(topology);
    const CountryIds ids(topology);
    for (const std::string &name : names)
        add_named(selection, topology, index, ids, name);
    remove_others(selection, topology);
    find_borders(topology);
}

} // namespace atlas
