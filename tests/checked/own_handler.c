/* SPDX-License-Identifier: MIT */
/* A program that handles faults itself, and follows a pointer out of a released node: the fault is explained first. */
#include <signal.h>
#include <string.h>
#include <unistd.h>

#include <mova/lists/generic_list.h>

static struct sigaction before;

static void handle(int signal, siginfo_t *fault, void *context)
{
    static const char text[] = "the program's own handler\n";
    (void)fault;
    (void)context;
    if (write(2, text, sizeof text - 1) < 0)
        _exit(1);
    sigaction(signal, &before, NULL);
}

int main(void)
{
    struct sigaction own;
    memset(&own, 0, sizeof own);
    own.sa_sigaction = handle;
    own.sa_flags = SA_SIGINFO;
    sigaction(SIGSEGV, &own, &before);
    GL_list *list = GL_create();
    int item = 0;
    GL_append_after_last(list, &item);
    GL_node *node = GL_append_after_last(list, &item);
    GL_remove_item(list, node);
    return *(int *)node->item;
}
