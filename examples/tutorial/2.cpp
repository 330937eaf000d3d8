/* SPDX-License-Identifier: MIT */
/* Tasks leave the list of those that wait while it is walked. */
#include <mova/cxx/pointer_list.h>
#include <algorithm>
#include <cstdio>
#include <sstream>
#include <string>

struct task {
    std::string name, needs;
};
using task_list = mova::pointer_list<task>;

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
        task *each = *at;
        if (!may_start(*each, done))
            continue;
        std::printf("%s%s", started++ ? " " : "", each->name.c_str());
        waiting.remove(at);
        done.append(each);
    }
    return started;
}

int main()
{
    task tasks[] = {{"launch", "paint rig"}, {"paint", "sand"}, {"sand", ""}, {"rig", "mast"}, {"mast", ""}};
    task_list waiting, done;
    for (task &each : tasks)
        waiting.append(&each);
    while (walk_once(waiting, done))
        std::printf("\n");
}
