#include <string.h>

#include <mova/frame/host.h>
#include <mova/host/errors.h>
#include <mova/host/memory.h>
#include <mova/host/memory_blocks.h>
#include <mova/host/messages.h>

#include "c_api.h"
#include "check.h"

static char text[80];
static int32_t code;

static void keep_text(const char *received)
{
    snprintf(text, sizeof text, "%s", received);
}

static void keep_error(const char *module, int32_t line, int32_t raised)
{
    mova_error_text(text, sizeof text, module, line, raised);
    code = raised;
}

static void messages(void)
{
    CHECK(mova_set_debug_print(keep_text) == NULL);
    mova_dprintf("%d nodes\n", 3);
    CHECK(strcmp(text, "3 nodes\n") == 0);
    CHECK(mova_set_message(keep_text) == NULL);
    MSG_Message("full");
    CHECK(strcmp(text, "full") == 0);
    debug_break();
}

static void errors(void)
{
    CHECK(mova_set_error_handler(keep_error) == NULL);
    EX_raise_exception_line("plut", 155, MOVA_ID_NOT_FOUND);
    CHECK(code == 4397);
    CHECK(strcmp(text, "plut, line 155: an id or a pointer was not found (4397)") == 0);
    CHECK(mova_set_error_handler(NULL) == keep_error);
}

static void memory(void)
{
    char *block = MM_alloc_item(4);
    memcpy(block, "abc", 4);
    block = MM_realloc_item(block, 4, 40);
    CHECK(strcmp(block, "abc") == 0);
    const mova_memory_totals totals = mova_memory_statistics();
    const mova_memory_class class_of_40 = mova_memory_statistics_of_size(40);
    /* Under a sanitizer the blocks are the system's, and all figures are 0. */
    CHECK(totals.held_bytes == 0 || class_of_40.live_blocks >= 1);
    CHECK(totals.live_bytes >= class_of_40.live_blocks * class_of_40.block_size);
    MM_dealloc_item(block, 40);
}

static void memory_blocks(void)
{
    mb_pool *pool = mb_create_pool(64);
    mb_handle front = mb_alloc(pool, 30), back = mb_alloc(pool, 16);
    memcpy(mb_get(pool, back), "behind", 7);
    mb_free(pool, &front);
    CHECK(front == 0 && back != 0);
    CHECK(mb_alloc(pool, 49) == 0);
    /* The room is at both ends: the block in the middle moves. */
    mb_handle large = mb_alloc(pool, 48);
    CHECK(large != 0 && large != back);
    CHECK(strcmp(mb_get(pool, back), "behind") == 0);
    const mb_statistics figures = mb_pool_statistics(pool);
    CHECK(figures.budget == 64 && figures.live_bytes == 64 && figures.live_blocks == 2);
    CHECK(figures.moves == 1 && figures.moved_bytes == MB_UNIT);
    mb_release_pool(&pool);
    CHECK(pool == NULL);
}

static void dead_handle(void)
{
    mb_pool *pool = mb_create_pool(64);
    mb_handle handle = mb_alloc(pool, 0);
    mb_handle copy = handle;
    mb_free(pool, &handle);
    CHECK(mb_get(pool, copy) == NULL);
    mova_set_error_handler(keep_error);
    mb_free(pool, &copy);
    mova_set_error_handler(NULL);
    CHECK(code == MOVA_PRECONDITION_BROKEN && copy == 0);
    CHECK(strstr(text, "memory blocks, line 10:") == text);
    mb_release_pool(&pool);
}

void drive_host(void)
{
    messages();
    errors();
    memory();
    memory_blocks();
    dead_handle();
}
