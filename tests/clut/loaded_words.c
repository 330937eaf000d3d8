/* SPDX-License-Identifier: MIT */
/* A program that is not linked with the library and loads it while it runs. Where the program has variables of its own
   under the library's names, those are the ones that the library reads and writes. */
#define _GNU_SOURCE
#include <string.h>

#include <dlfcn.h>

#include <mova/frame/host.h>

#include <tests/c_api/check.h>

static char text[80];

static void keep_text(const char *received)
{
    strncpy(text, received, sizeof text - 1);
}

/* A function's address; C has no conversion from dlsym's result. */
static void find(const char *name, void *function)
{
    void *address = dlsym(RTLD_DEFAULT, name);
    CHECK(address != NULL);
    memcpy(function, &address, sizeof address);
}

static void find_and_keep_text(void)
{
    void *(*set_debug_print)(void (*print)(const char *));
    find("mova_set_debug_print", &set_debug_print);
    set_debug_print(keep_text);
}

int main(void)
{
    int32_t *own_level = dlsym(RTLD_DEFAULT, "clut_debug");
    if (own_level)
        *own_level = 1;
    CHECK(dlopen(CONTAINER_LIBRARY, RTLD_NOW | RTLD_GLOBAL) != NULL);

    int32_t *level = dlsym(RTLD_DEFAULT, "clut_debug");
    CHECK(own_level ? level == own_level && *level == 1 : level != NULL && *level == 0);
    find_and_keep_text();
    void (*init)(int32_t, void (*)(int32_t, int16_t, int16_t, int16_t), mova_word);
    find("RGBLUT_init", &init);
    init(64, NULL, 0);
    CHECK(strcmp(text, own_level ? "CLUT alloc 38\n" : "") == 0);
    CHECK(*(int32_t *)dlsym(RTLD_DEFAULT, "GE_DRKCYAN") == 38);

    int32_t (*new_index)(void);
    find("CLUT_new_index", &new_index);
    *level = 1;
    CHECK(new_index() == 40);
    CHECK(strcmp(text, "new index : 40\n") == 0);
    return 0;
}
