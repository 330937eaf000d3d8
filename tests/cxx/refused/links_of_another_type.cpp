/* SPDX-License-Identifier: MIT */
// mova::intrusive_list: give the member that carries the links: a mova::links
#include <mova/cxx/intrusive_list.h>
struct job {
    void *prev, *next;
};
mova::intrusive_list<job, &job::prev> jobs;
