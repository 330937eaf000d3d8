/* SPDX-License-Identifier: MIT */
/* Tasks in a list. */
#include <mova/cxx/pointer_list.h>
#include <cstdio>

struct task {
    const char *name, *needs;
};

int main()
{
    task tasks[] = {{"launch", "paint rig"}, {"paint", "sand"}, {"sand", ""}, {"rig", "mast"}, {"mast", ""}};
    mova::pointer_list<task> waiting;
    for (task &each : tasks)
        waiting.append(&each);

    for (const task *each : waiting)
        std::printf("%s (%s)\n", each->name, each->needs);
}
