/* SPDX-License-Identifier: MIT */
/* A program that handles faults itself. It goes on after one of its own, and follows a pointer out of a released node then: that
   fault is explained first. With an argument it sets its handler by signal(), else by sigaction(). */
#include <setjmp.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <mova/lists/generic_list.h>

static struct sigaction before;
static sigjmp_buf after_own_fault;
static int is_own_fault;

static void say(const char *text)
{
    if (write(2, text, strlen(text)) < 0)
        _exit(1);
}

static void handle(int signal)
{
    say("the program's own handler\n");
    if (is_own_fault)
        siglongjmp(after_own_fault, 1);
    sigaction(signal, &before, NULL);
}

static void handle_with_more(int signal, siginfo_t *fault, void *context)
{
    (void)context;
    if (!fault)
        say("nothing is known of the fault\n");
    handle(signal);
}

static void set_handler(int by_signal)
{
    struct sigaction own, now;
    if (sigaction(SIGSEGV, NULL, &before) != 0 || before.sa_handler != SIG_DFL)
        say("it was handled before\n");
    memset(&own, 0, sizeof own);
    own.sa_sigaction = handle_with_more;
    own.sa_flags = SA_SIGINFO;
    if (by_signal ? signal(SIGSEGV, handle) != SIG_DFL
                  : sigaction(SIGSEGV, &own, &now) != 0 || now.sa_handler != SIG_DFL)
        say("another handler was set before\n");
    if (sigaction(SIGSEGV, NULL, &now) != 0 ||
        (by_signal ? now.sa_handler != handle : now.sa_sigaction != handle_with_more))
        say("another handler is set\n");
}

int main(int arguments, char **argument)
{
    (void)argument;
    GL_list *list = GL_create();
    int item = 0;
    for (int i = 0; i < 3; ++i)
        GL_append_after_last(list, &item);
    set_handler(arguments > 1);
    is_own_fault = 1;
    if (sigsetjmp(after_own_fault, 1) == 0)
        *(volatile int *)16 = 1;
    is_own_fault = 0;
    GL_node *node = list->first;
    GL_remove_item(list, node);
    return *(int *)node->item;
}
