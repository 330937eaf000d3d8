/* SPDX-License-Identifier: MIT */
#include <mova/clut/colour_table.h>

#include "misuse.h"

/* Whether the callback is to make the table once more, and what another thread is to do meanwhile. */
static int begins_again;
static void *(*meanwhile)(void *);

static void shown(int32_t index, int16_t red, int16_t green, int16_t blue)
{
    void *(*act)(void *) = meanwhile;
    meanwhile = NULL;
    (void)index, (void)red, (void)green, (void)blue;
    if (act)
        in_a_thread(act, NULL);
    if (begins_again)
        RGBLUT_init(64, NULL, 0);
}

static void negative_index(int misused)
{
    RGBLUT_init(64, shown, 0);
    CLUT_set(misused ? -1 : 40, 1, 2, 3);
}

static void negative_hard_index(int misused)
{
    RGBLUT_init(64, shown, 0);
    CLUT_alloc(misused ? -2 : 40);
}

static void negative_released_index(int misused)
{
    int32_t index;
    RGBLUT_init(64, shown, 0);
    index = CLUT_new_index();
    CLUT_release_index(misused ? -1 : index);
}

static void negative_source(int misused)
{
    RGBLUT_init(64, shown, 0);
    CLUT_copy(20, misused ? -1 : 21);
}

static void null_component(int misused)
{
    int16_t red, green, blue;
    RGBLUT_init(64, shown, 0);
    CLUT_get(20, &red, misused ? NULL : &green, &blue);
}

static void component_out_of_range(int misused)
{
    RGBLUT_init(64, shown, 0);
    CLUT_set_RGB(40, 0.5f, 1.0f, misused ? 1e9f : 0.0f);
}

static void made_by_its_callback(int misused)
{
    RGBLUT_init(64, shown, 0);
    begins_again = misused;
    CLUT_set(40, 1, 2, 3);
}

static void *set_another(void *argument)
{
    CLUT_set(41, 3, 2, 1);
    return argument;
}

static void *get_one(void *argument)
{
    int16_t red, green, blue;
    CLUT_get(20, &red, &green, &blue);
    return argument;
}

static void set_by_two_threads(int misused)
{
    RGBLUT_init(64, shown, 0);
    in_a_thread(set_another, NULL);
    meanwhile = misused ? set_another : do_nothing;
    CLUT_set(40, 1, 2, 3);
}

static void read_while_it_is_set(int misused)
{
    RGBLUT_init(64, shown, 0);
    in_a_thread(get_one, NULL);
    meanwhile = misused ? get_one : do_nothing;
    CLUT_set(40, 1, 2, 3);
}

static const misuse_cell cells[] = {
    {"null component", 1, "CLUT_get: the address of a component is null", null_component},
    {"negative index", 7, "CLUT_set: the index is negative", negative_index},
    {"negative hard index", 7, "CLUT_alloc: the index is negative", negative_hard_index},
    {"negative released index", 7, "CLUT_release_index: the index is negative", negative_released_index},
    {"negative source", 7, "CLUT_copy: the index is negative", negative_source},
    {"component out of range", 7, "CLUT_set_RGB: a component is out of range", component_out_of_range},
    {"made by its callback", 9, "RGBLUT_init: the colour table is calling back in CLUT_set", made_by_its_callback},
    {"set by two threads", 10, "CLUT_set: another thread used the colour table meanwhile", set_by_two_threads},
    {"read while it is set", 10, "CLUT_set: another thread used the colour table meanwhile", read_while_it_is_set},
};

int main(int arguments, char **argument)
{
    return run_cell(cells, sizeof cells / sizeof cells[0], arguments, argument);
}
