/* SPDX-License-Identifier: MIT */
/* The timers of an event loop: started, stopped and moved by what they call. */
#include <mova/tree/balanced_tree.h>
#include <stdio.h>

typedef struct timer {
    int due, every; /* ms; it is started again where `every` is not 0 */
    void (*call)(GT_tree *timers, struct timer *self);
    struct timer *guarded; /* what `call` may stop */
    GT_tree_item *place;   /* null while it is not started */
} timer;

static int32_t by_time(void *a, void *b)
{
    const timer *one = a, *other = b;
    return (one->due > other->due) - (one->due < other->due);
}

static void start(GT_tree *timers, timer *t, int due)
{
    if (t->place)
        GT_remove_item(timers, t->place);
    t->due = due; /* only while it is out of the tree */
    t->place = GT_insert_item(timers, t);
}

static void stop(GT_tree *timers, timer *t)
{
    if (t->place)
        GT_remove_item(timers, t->place);
    t->place = NULL;
    t->every = 0;
}

static void tick(GT_tree *timers, timer *self)
{
    printf("%d: tick\n", self->due);
    if (self->due == 300)
        stop(timers, self);
}

static void answer(GT_tree *timers, timer *self)
{
    printf("%d: the answer is there in time\n", self->due);
    stop(timers, self->guarded);
}

static void give_up(GT_tree *timers, timer *self)
{
    (void)timers;
    printf("%d: no answer\n", self->due);
}

/* Time passes as fast as the timers need it. A real loop sleeps until the first is due. */
static void run(GT_tree *timers, int end)
{
    while (timers->first && ((timer *)timers->first->item)->due <= end) {
        timer *each = timers->first->item;
        GT_remove_first_item(timers);
        each->place = NULL;
        each->call(timers, each);
        if (each->every && !each->place)
            start(timers, each, each->due + each->every);
    }
}

int main(void)
{
    timer clock = {.every = 100, .call = tick}, patience = {.call = give_up};
    timer reply = {.call = answer, .guarded = &patience};
    GT_tree *timers = GT_create_with_dupl_allowed(by_time);
    start(timers, &clock, 100);
    start(timers, &patience, 250);
    start(timers, &reply, 200);
    run(timers, 1000);
    GT_release(&timers);
}
