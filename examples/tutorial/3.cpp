/* SPDX-License-Identifier: MIT */
/* Tasks are read, and belong to the list that they are in. */
#include <mova/cxx/pointer_list.h>
#include <algorithm>
#include <cstdio>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

struct task {
    std::string name, needs;
};
using task_list = mova::pointer_list<task, std::default_delete<task>>;

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

static bool is_done(const task_list &done, const std::string &name)
{
    return std::ranges::any_of(done, [&](const task *each) { return each->name == name; });
}

/* Whether all that the task needs is done. */
static bool may_start(const task &each, const task_list &done)
{
    std::istringstream rest(each.needs);
    for (std::string need; rest >> need;) {
        if (!is_done(done, need))
            return false;
    }
    return true;
}

/* Does every task that may start. Returns how many did. */
static int walk_once(task_list &waiting, task_list &done)
{
    int started = 0;
    for (auto at : waiting.positions()) {
        if (!may_start(**at, done))
            continue;
        std::printf("%s%s", started++ ? " " : "", (*at)->name.c_str());
        done.append(waiting.take(at));
    }
    return started;
}

int main()
{
    task_list waiting, done;
    while (std::unique_ptr<task> each = read_task(std::cin))
        waiting.append(std::move(each));
    while (walk_once(waiting, done))
        std::printf("\n");
}
