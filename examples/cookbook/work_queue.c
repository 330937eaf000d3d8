/* SPDX-License-Identifier: MIT */
/* Downloads that are tried in turns. Each may finish, go to the back, or make another one needless. */
#include <mova/lists/simple_list.h>
#include <stdio.h>

typedef struct download {
    mova_sl_links links; /* the list's */
    const char *name;
    int tries;                /* that it takes */
    struct download *instead; /* what is not needed any more when this one is there */
    int needless;
} download;

/* Tries each once. What is appended in the walk comes in the next one. */
static void try_each(SL_list *queue)
{
    SL_iterator walk = SL_all_items(queue);
    void *item;
    while (SL_next_item(&walk, &item)) {
        download *each = item;
        SL_remove_item(queue, each);
        if (each->needless) {
            printf("%s is dropped\n", each->name);
        } else if (--each->tries == 0) {
            printf("%s is there\n", each->name);
            if (each->instead)
                each->instead->needless = 1; /* it may be the next of the walk: it leaves when its turn comes */
        } else {
            printf("%s goes to the back\n", each->name);
            SL_append_after_last(queue, each);
        }
    }
}

int main(void)
{
    download mirror = {.name = "map from the mirror", .tries = 3};
    download map = {.name = "map", .tries = 2, .instead = &mirror};
    download font = {.name = "font", .tries = 1};
    SL_list *queue = SL_create();
    SL_append_after_last(queue, &map);
    SL_append_after_last(queue, &mirror);
    SL_append_after_last(queue, &font);
    for (int turn = 1; SL_count_items(queue); ++turn) {
        printf("turn %d\n", turn);
        try_each(queue);
    }
    SL_release(&queue);
}
