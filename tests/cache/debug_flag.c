/* SPDX-License-Identifier: MIT */
/* A program that switches the traces, linked with the library. */
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

/* An insertion and a removal are a line each. */
static int lines_of_two_calls(cc_cache *cache)
{
    lines = 0;
    cc_entry *entry = cc_insert(cache, NULL, 0, NULL, NULL, NULL, NULL);
    cc_remove(cache, &entry);
    return lines;
}

int main(void)
{
    cc_cache *cache = cc_create(NULL);
    mova_set_debug_print(count_line);
    CHECK(lines_of_two_calls(cache) == LINES_AT_FIRST);
    cc_debug = 0;
    CHECK(lines_of_two_calls(cache) == 0);
    cc_debug = INT32_MIN;
    CHECK(lines_of_two_calls(cache) == 2);
    MM_dealloc_item(cache, sizeof *cache);
    return 0;
}
