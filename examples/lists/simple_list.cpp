/* SPDX-License-Identifier: MIT */
/* Jobs in their order, linked by what they begin with: the list allocates nothing for them. */
#include <mova/lists/simple_list.h>
#include <cstdio>

struct job {
    job *prev, *next;
    const char *name;
};

int main()
{
    job wash{nullptr, nullptr, "wash"}, dry{nullptr, nullptr, "dry"}, fold{nullptr, nullptr, "fold"};
    SL_list *jobs = SL_create();
    SL_append_after_last(jobs, &wash);
    SL_append_after_last(jobs, &fold);
    SL_insert_before(jobs, &fold, &dry);
    SL_remove_item(jobs, &wash);
    for (auto *each = static_cast<job *>(jobs->first); each; each = each->next)
        std::printf("%s\n", each->name);
    SL_remove_item(jobs, &dry);
    SL_remove_item(jobs, &fold);
    SL_release(&jobs);
}
