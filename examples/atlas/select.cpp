#include "select.h"

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

static void add_named(Selection &selection, const NameIndex &index, const CountryIds &ids, const std::string &name)
{
    const std::vector<const Country *> found = index.find(name);
    if (found.empty())
        throw Error("no country is named " + name);
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
        add_named(selection, index, ids, name);
    remove_others(selection, topology);
    find_borders(topology);
}

} // namespace atlas
