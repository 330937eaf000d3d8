/* SPDX-License-Identifier: MIT */
/* A task that is done brings others, which take its place in the list. */
#include <mova/cxx/balanced_tree.h>
#include <mova/cxx/pointer_list.h>
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

/* Returns the task of the next line, or null at the end. */
static std::unique_ptr<task> read_task(std::istream &from)
{
    std::string line;
    if (!std::getline(from, line))
        return nullptr;
    std::istringstream words(line);
    auto made = std::make_unique<task>();
    words >> made->name >> std::ws;
    std::getline(words, made->needs);
    return made;
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

int main()
{
    task_list waiting;
    task_set done;
    while (std::unique_ptr<task> each = read_task(std::cin))
        waiting.append(std::move(each));
    while (walk_once(waiting, done))
        std::printf("\n");

    std::printf("done:");
    for (const task &each : done)
        std::printf(" %s", each.name.c_str());
    std::printf("\n");
}
