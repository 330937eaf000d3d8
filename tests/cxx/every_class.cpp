/* SPDX-License-Identifier: MIT */
// Every class of the typed layer whole, each of its functions that is not a template itself.
#include <mova/cxx.h>

#include <string>

namespace {

struct job {
    int number;
    mova::links waiting;
    bool operator==(const job &other) const { return number == other.number; }
};
struct tile {
    std::size_t body_size() const { return 1; }
    void fill(std::span<int>) {}
};
struct country {
    std::string name;
    bool operator==(const country &) const = default;
};

} // namespace

template class mova::pointer_list<int>;
template class mova::pointer_list<const int>;
template class mova::pointer_list<int, std::default_delete<int>>;
template class mova::element_list<int>;
template class mova::element_ring<int>;
template class mova::element_stack<int>;
template class mova::intrusive_list<job, &job::waiting>;
template class mova::intrusive_ring<job, &job::waiting>;
template class mova::intrusive_list<job, &job::waiting, std::default_delete<job>>;
template class mova::intrusive_ring<job, &job::waiting, std::default_delete<job>>;
template class mova::block_array<int>;
template class mova::dynamic_array<int>;
template class mova::companion<mova::dynamic_array<int>>;
template class mova::id_table<int>;
template class mova::hash_table<int *, int>;
template class mova::hash_table<unsigned short, char>;
template class mova::pointer_lookup<int *, int>;
template class mova::keyed_table<country, &country::name>;
template class mova::basic_tree<int, std::compare_three_way, false, mova::borrowed>;
template class mova::basic_tree<int, std::compare_three_way, true, std::default_delete<int>>;
template class mova::swap_cache<tile, int>;
