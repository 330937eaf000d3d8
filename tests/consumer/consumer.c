/* SPDX-License-Identifier: MIT */
/* A program in C that uses an installed libmova_container and its default host. */
#include <stdio.h>
#include <string.h>

#include <mova/container.h>
#include <mova/frame/host.h>
#include <mova/host/errors.h>
#include <mova/host/memory.h>
#include <mova/host/messages.h>
#include <mova/version.h>

static int raised;

static void count_raise(const char *module, int32_t line, int32_t code)
{
    (void)module;
    (void)line;
    (void)code;
    ++raised;
}

static int is_of_the_headers_version(void)
{
    char text[20];
    snprintf(text, sizeof text, "%d.%d.%d", MOVA_VERSION_MAJOR, MOVA_VERSION_MINOR, MOVA_VERSION_PATCH);
    return mova_version() == MOVA_VERSION && strcmp(mova_version_text(), text) == 0;
}

int main(void)
{
    int items[3] = {1, 2, 4};
    GL_list *list = GL_create();
    for (int i = 0; i < 3; ++i)
        GL_append_after_last(list, &items[i]);

    int sum = 0;
    void *item;
    GL_iterator iterator = GL_all_items(list);
    while (GL_next_item(&iterator, &item))
        sum += *(int *)item;
    GL_release(&list);

    mova_set_error_handler(count_raise);
    EX_raise_exception_line("consumer", 1, MOVA_PRECONDITION_BROKEN);
    printf("sum %d, raised %d\n", sum, raised);
    return sum == 7 && raised == 1 && is_of_the_headers_version() ? 0 : 1;
}
