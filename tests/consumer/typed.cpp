/* SPDX-License-Identifier: MIT */
// A program in C++20 that uses the typed layer of an installed libmova_container, with exceptions or without.
#include <mova/cxx.h>

#include <cstdio>
#include <string>

namespace {

struct country {
    std::string name;
    int area;
};

struct by_area {
    auto operator()(const country &a, const country &b) const { return a.area <=> b.area; }
};

} // namespace

int main()
{
    country countries[] = {{"Italy", 302}, {"France", 544}, {"Norway", 385}};
    mova::balanced_set<country, by_area> ordered(countries);
    mova::keyed_table<country, &country::name> named(countries);
    mova::pointer_list<country> large;
    for (country &each : ordered.reversed())
        large.append(&each);
    for (auto at : large.positions()) {
        if ((*at)->area < 350)
            large.remove(at);
    }
    std::printf("%d of %d, Italy has %d\n", static_cast<int>(large.size()), static_cast<int>(named.size()),
                named.find("Italy")->area);
    return large.size() == 2 && large.front()->name == "France" ? 0 : 1;
}
