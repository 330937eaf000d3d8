/* SPDX-License-Identifier: MIT */
/* A program that loads the library as it runs, and switches the traces. Where it has a flag of its own, that counts, with
   the value that it has before the library is there. */
#include <dlfcn.h>

#include <mova/cache/swap_cache.h>
#include <mova/host/messages.h>

#include <tests/c_api/check.h>

#ifdef PROGRAM_DEFINES_THE_FLAG
int32_t cc_debug = 1;
#define LINES_AT_FIRST 2
#else
#define LINES_AT_FIRST 0
#endif

static int lines;

static void count_line(const char *text)
{
    (void)text;
    ++lines;
}

static void *load(const char *path)
{
    void *library = dlopen(path, RTLD_NOW | RTLD_GLOBAL);
    if (!library)
        fprintf(stderr, "%s\n", dlerror());
    CHECK(library != NULL);
    return library;
}

/* Stores the address of a function, or a variable, in a pointer to it. */
static void find(void *library, const char *name, void *pointer)
{
    *(void **)pointer = dlsym(library, name);
    CHECK(*(void **)pointer != NULL);
}

static int lines_of_two_calls(void *library)
{
    cc_cache *(*create)(mb_pool *);
    cc_entry *(*insert)(cc_cache *, void *, mb_handle, cc_size_fn, cc_swap_in_fn, cc_write_back_fn, cc_release_fn);
    void (*remove_entry)(cc_cache *, cc_entry **);
    void (*dealloc_item)(void *, size_t);
    find(library, "cc_create", &create);
    find(library, "cc_insert", &insert);
    find(library, "cc_remove", &remove_entry);
    find(library, "MM_dealloc_item", &dealloc_item);
    lines = 0;
    cc_cache *cache = create(NULL);
    cc_entry *entry = insert(cache, NULL, 0, NULL, NULL, NULL, NULL);
    remove_entry(cache, &entry);
    dealloc_item(cache, sizeof *cache);
    return lines;
}

int main(void)
{
    void *host = load(HOST_LIBRARY);
    void *container = load(CONTAINER_LIBRARY);
    mova_text_fn (*set_debug_print)(mova_text_fn);
    int32_t *flag;
    find(host, "mova_set_debug_print", &set_debug_print);
    find(RTLD_DEFAULT, "cc_debug", &flag);
#ifdef PROGRAM_DEFINES_THE_FLAG
    CHECK(flag == &cc_debug);
#endif
    set_debug_print(count_line);
    CHECK(lines_of_two_calls(container) == LINES_AT_FIRST);
    *flag = 0;
    CHECK(lines_of_two_calls(container) == 0);
    *flag = 1;
    CHECK(lines_of_two_calls(container) == 2);
    return 0;
}
