/* SPDX-License-Identifier: MIT */
/* How cost grows: what the main operations of a family take for an item, from 10 items on, beside what one would use
   instead.

   A family's benchmark tells how a container lives, once for all contenders, and registers it in one call:

       template <class List>
       void live(growth::life &of)
       {
           List list;
           of.fill("append", [&] { append(list, of.items()); });
           of.repeat("walk", of.items(), [&] { walk(list); });
       }

       const bool registered = growth::add("simple_list", {{"mova", live<mova_list>, 1e7}, {"boost", live<boost_list>, 1e7}});

   At each size each contender lives in processes of its own, in turns with the others; there it lives again and again for
   some hundredths of a second, and the medians count. The first life is left out where there is another, for it meets memory that
   the system has yet to give; but it tells how many bytes become resident. */
#ifndef MOVA_BENCH_GROWTH_H
#define MOVA_BENCH_GROWTH_H

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

namespace growth {

/* By operation; nanoseconds, or bytes, for an item. */
using figures = std::map<std::string_view, std::vector<double>>;

class life {
public:
    life(size_t items, bool first, figures &times) : items_(items), first_(first), times_(times) {}

    size_t items() const { return items_; }

    /* Times the work that puts all items into the container, and notes the bytes that it takes. */
    template <class Work>
    void fill(const char *operation, const Work &work)
    {
        const double before = resident();
        once(operation, items_, work);
        note_bytes(resident() - before);
    }

    /* Times work that can be done but once in a life. It is so many operations. */
    template <class Work>
    void once(const char *operation, size_t operations, const Work &work)
    {
        const double start = now(operations);
        work();
        benchmark::ClobberMemory();
        note(operation, now(operations) - start, operations);
    }

    /* Times work that leaves everything as it was; it is done more than once where it is short. */
    template <class Work>
    void repeat(const char *operation, size_t operations, const Work &work)
    {
        const size_t times = 1 + enough_operations / operations;
        const double start = now(operations * times);
        for (size_t i = 0; i < times; ++i) {
            work();
            benchmark::ClobberMemory();
        }
        note(operation, now(operations * times) - start, operations * times);
    }

private:
    static constexpr size_t enough_operations = 10000;

    static double now(size_t operations);
    double resident() const;
    void note(const char *operation, double nanoseconds, size_t operations);
    void note_bytes(double bytes);

    size_t items_;
    bool first_;
    figures &times_;
};

struct contender {
    const char *name;
    void (*live)(life &); /* null: it is not to be had on this machine */
    double most;          /* items */
};

/* Registers a family by its name in cmake/families.cmake. Ours is the first contender. The result means nothing. */
bool add(const char *name, const std::vector<contender> &contenders);

/* Measures the families that the words name, or all, and prints a line FAMILY,OPERATION,CONTENDER,ITEMS,FIGURE for each
   figure. A number among the words is the most items that there are to be. Returns the program's exit code. */
int run(const std::vector<std::string> &words);

} // namespace growth

#endif
