/* SPDX-License-Identifier: MIT */
/* The scoreboard: what the library does, beside what one would use instead, in one table.

   A row is registered in one call, from any file of this program:

       const bool registered = scoreboard::add_timed({
           .id = "L3",
           .workload = "find an absent item, 1e5 items",
           .operations = 1e5,
           .ours = find_absent_in_mova,
           .peers = {{"g_queue_find", find_absent_in_queue, 2.8}}});

   A file with the first rows of a family takes the word `bench` in cmake/families.cmake; what a row shows goes into
   docs/performance.md.

   Several rows may have one id: they are selected together. Every row runs in a process of its own, so that none meets
   the heap that another has left; there, ours and the peers take turns in random order, and the medians count. Times
   are processor time, so a busy machine disturbs them little. Each figure is shown with its spread, half the distance
   between the quartiles; that of a ratio is the sum of both. A target that lies within the spread is neither met nor
   missed: the row says "too noisy". */
#ifndef MOVA_BENCH_SCOREBOARD_H
#define MOVA_BENCH_SCOREBOARD_H

#include <functional>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace scoreboard {

/* Sets its data up, does its work in the loop over the state, and frees what it made. */
using timed_work = std::function<void(benchmark::State &)>;

struct timed_peer {
    std::string name;
    timed_work work; /* none: the peer is not to be had on this machine */
    double at_least; /* the target for the peer's time divided by ours; 0 is no target */
};

struct timed_row {
    std::string id, workload;
    double operations; /* in one turn of the loop; our time is shown for one of them */
    timed_work ours;
    std::vector<timed_peer> peers;
};

/* Returns the figure. Each call is made in a process of its own. */
using measured_work = std::function<double()>;

struct measured_peer {
    std::string name;
    measured_work work; /* none: the peer is not to be had on this machine */
};

/* The most that our figure is to be, and the most that it is to be divided by the smallest of the peers'; 0 is no
   target. */
struct measured_target {
    double at_most, of_peers;
};

/* A row whose figure the work measures itself: bytes, or the time of several threads. */
struct measured_row {
    std::string id, workload, unit;
    measured_work ours;
    measured_target wanted;
    std::vector<measured_peer> peers;
};

/* Register a row. Their result means nothing: it lets a constant be initialised with the call. */
bool add_timed(timed_row row);
bool add_measured(measured_row row);

/* Work on so many items. */
using sized_work = void (*)(benchmark::State &, size_t count);

struct sized_peer {
    const char *name;
    sized_work work;
    double at_least;
};

/* Registers a timed row of one operation for each item. */
bool add_sized(const char *id, const std::string &workload, size_t count, sized_work ours,
               const std::vector<sized_peer> &peers);

/* Runs the rows that the command line names, or all, and prints the table. Returns the program's exit code. */
int run(int argc, char **argv);

} // namespace scoreboard

#endif
