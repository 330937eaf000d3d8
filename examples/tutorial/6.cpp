/* SPDX-License-Identifier: MIT */
/* The whole program: errors are told, and everything is released. */
#include <mova/cxx/balanced_tree.h>
#include <mova/cxx/pointer_list.h>
#include <mova/host/errors.h>
#include <cstdio>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

struct task {
    std::string name, needs;
};
struct by_name {
    auto operator()(const task &a, const task &b) const { return a.name <=> b.name; }
    auto operator()(const std::string &name, const task &b) const { return name <=> b.name; }
};
using task_list = mova::pointer_list<task, std::default_delete<task>>;
using task_set = mova::balanced_set<task, by_name, std::default_delete<task>>;

/* Adds the task of each line. Returns 0, or the number of the first line that is none. */
static int read_tasks(task_list &waiting, std::istream &from)
{
    std::string line;
    for (int number = 1; std::getline(from, line); ++number) {
        std::istringstream words(line);
        auto read = std::make_unique<task>();
        if (!(words >> read->name))
            return number;
        std::getline(words, read->needs);
        waiting.append(std::move(read));
    }
    return 0;
}

/* Whether all that the task needs is done. */
static bool may_start(const task &each, const task_set &done)
{
    std::istringstream rest(each.needs);
    for (std::string need; rest >> need;) {
        if (need[0] != '+' && !done.contains(need))
            return false;
    }
    return true;
}

/* Inserts, after the position, what its task brings: the words with a plus. */
static void insert_brought(task_list &waiting, task_list::position at)
{
    std::istringstream rest((*at)->needs);
    for (std::string word; rest >> word;) {
        if (word[0] == '+')
            at = waiting.insert_after(at, std::make_unique<task>(task{word.substr(1), ""}));
    }
}

/* Does every task that may start. Returns how many did. */
static int walk_once(task_list &waiting, task_set &done)
{
    int started = 0;
    for (auto at : waiting.positions()) {
        if (!may_start(**at, done))
            continue;
        std::printf("%s%s", started++ ? " " : "", (*at)->name.c_str());
        insert_brought(waiting, at);
        done.insert(waiting.take(at));
    }
    return started;
}

static int plan()
{
    task_list waiting;
    task_set done;
    if (const int bad_line = read_tasks(waiting, std::cin)) {
        std::fprintf(stderr, "plan: line %d is no task\n", bad_line);
        return 2;
    }
    while (walk_once(waiting, done))
        std::printf("\n");
    std::printf("done:");
    for (const task &each : done)
        std::printf(" %s", each.name.c_str());
    std::printf("\n");
    if (waiting.empty())
        return 0;
    std::fprintf(stderr, "plan: these wait for ever:");
    for (const task *each : waiting)
        std::fprintf(stderr, " %s", each->name.c_str());
    std::fprintf(stderr, "\n");
    return 1;
}

int main()
{
    try {
        return plan();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "plan: %s\n", error.what());
        return 2;
    }
}
