#include "select.h"

#include <mova/arrays/id_lookup_table.h>
#include <mova/arrays/sorted_number_array.h>

#include "borders.h"
#include "error.h"

namespace atlas {

namespace {

/* The numbers of the countries to keep, which are their positions in the topology's list. */
class Selection {
public:
    ~Selection() { DA_release(numbers_); }
    Selection() = default;
    Selection(const Selection &) = delete;
    Selection &operator=(const Selection &) = delete;

    DA_array *get() { return numbers_; }

private:
    DA_array *numbers_ = DA_create(sizeof(std::int32_t), 64);
};

} // namespace

static void add(Selection &selection, const Topology &topology, const std::string &name)
{
    bool found = false;
    std::int32_t number = 0;
    GL_iterator countries = GL_all_items(topology.countries.get());
    while (const Country *country = next_record<Country>(countries)) {
        if (!country->name.empty() && country->name.view() == name) {
            SA_add_number(selection.get(), number);
            found = true;
        }
        ++number;
    }
    if (!found)
        throw Error("no country is named " + name);
}

/* Each removal moves the countries behind it up by one, and their numbers with them. */
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
    for (const std::string &name : names)
        add(selection, topology, name);
    remove_others(selection, topology);
    find_borders(topology);
}

} // namespace atlas
