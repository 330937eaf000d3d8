/* SPDX-License-Identifier: MIT */
#define MOVA_OWN_DOUBLE_LIST
#include <mova/lists/double_list.h>

#include <mova/frame/internal/assert.h>
#include <mova/frame/internal/undo.h>
#include <mova/lists/internal/invariants.h>

/* clang warns of what the standard library's own sort is made of. */
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <algorithm>
#pragma GCC diagnostic pop
#include <cfloat>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

namespace {

/* From this many values on, DBLL_add_double_unique searches from the nearer end. */
constexpr int32_t long_list = 9;

double value_at(const EL_node *position)
{
    double value;
    std::memcpy(&value, position + 1, sizeof value);
    return value;
}

/* A double and no more: where registers hold more digits, it goes through memory. */
using rounded = std::conditional_t<FLT_EVAL_METHOD == 0, double, volatile double>;

double distance_between(double a, double b)
{
    const rounded difference = a - b;
    return std::fabs(difference);
}

/* The node after `node` on the way from `first` to `last`, which on a ring have no null link between them. */
EL_node *following(const DBLL_list *list, const EL_node *node)
{
    return node == list->last ? nullptr : node->next;
}

/* One pass of exchanges between neighbours. Returns whether there was one. */
bool exchange_neighbours(DBLL_list *list)
{
    bool exchanged = false;
    EL_node *node = list->first;
    for (EL_node *next; (next = following(list, node)); node = next) {
        const double value = value_at(node), next_value = value_at(next);
        if (next_value < value) {
            DBLL_replace_double(node, next_value);
            DBLL_replace_double(next, value);
            exchanged = true;
        }
    }
    return exchanged;
}

bool is_in_order(const DBLL_list *list)
{
    const EL_node *node = list->first;
    for (const EL_node *next; (next = following(list, node)); node = next) {
        if (value_at(next) < value_at(node))
            return false;
    }
    return true;
}

/* Sorts each stretch that holds no NaN. */
void sort_between_nans(double *values, double *end)
{
    while (values != end) {
        double *stretch_end = std::find_if(values, end, [](double value) { return std::isnan(value); });
        std::stable_sort(values, stretch_end);
        values = std::find_if_not(stretch_end, end, [](double value) { return std::isnan(value); });
    }
}

/* Sorts by way of an array. Returns false, with nothing changed, where there is no memory for it. */
bool sort_in_array(DBLL_list *list)
{
    std::unique_ptr<double[]> values(new (std::nothrow) double[static_cast<size_t>(list->count)]);
    if (!values)
        return false;
    double *end = values.get();
    for (const EL_node *node = list->first; node; node = following(list, node))
        *end++ = value_at(node);
    sort_between_nans(values.get(), end);
    const double *value = values.get();
    for (EL_node *node = list->first; node; node = following(list, node))
        DBLL_replace_double(node, *value++);
    return true;
}

enum class neighbour { none, near, beyond };

/* How an element that a search meets stands to a value that is to be inserted; `beyond` is past the value's place. */
neighbour compare(double element, double value, double tolerance, bool forward)
{
    if (distance_between(value, element) <= tolerance)
        return neighbour::near;
    return (forward ? value < element : element < value) ? neighbour::beyond : neighbour::none;
}

bool is_nearer_to_end(const DBLL_list *list, double value)
{
    return DBLL_size(list) >= long_list &&
           distance_between(value, DBLL_end_value(list)) < distance_between(value, DBLL_begin_value(list));
}

} // namespace

DBLL_list *DBLL_create(void)
{
    return EL_create(sizeof(double));
}

DBLL_list *DBLL_create_with_two(double first, double second)
{
    DBLL_list *list = DBLL_create();
    mova::or_undo(
        [&] {
            DBLL_add_double(list, first);
            DBLL_add_double(list, second);
        },
        [&] { DBLL_release(&list); });
    return list;
}

void DBLL_release(DBLL_list **list)
{
    EL_release(list);
}

void DBLL_make_empty(DBLL_list *list)
{
    EL_make_empty(list);
}

int32_t DBLL_size_inbetween(const DBLL_list *list, EL_node *from, EL_node *to)
{
    return EL_count_items_inbetween(list, from, to);
}

int DBLL_is_empty(const DBLL_list *list)
{
    return !list->first && !list->last;
}

void DBLL_set_closed(DBLL_list *list)
{
    EL_set_closed(list);
}

void DBLL_reset_closed(DBLL_list *list)
{
    EL_reset_closed(list);
}

int32_t DBLL_check(const DBLL_list *list)
{
    return static_cast<int32_t>(static_cast<uint32_t>(DBLL_size(list)) << 4);
}

EL_node *DBLL_add_double(DBLL_list *list, double value)
{
    return EL_append_after_last(list, &value);
}

EL_node *DBLL_insert_before(DBLL_list *list, EL_node *position, double value)
{
    return EL_insert_before(list, position, &value);
}

EL_node *DBLL_insert_after(DBLL_list *list, EL_node *position, double value)
{
    return EL_insert_after(list, position, &value);
}

EL_node *DBLL_insert_before_index(DBLL_list *list, int32_t index, double value)
{
    return EL_insert_before_index(list, index, &value);
}

EL_node *DBLL_insert_after_index(DBLL_list *list, int32_t index, double value)
{
    return EL_insert_after_index(list, index, &value);
}

int DBLL_add_double_unique(DBLL_list *list, double value, double tolerance)
{
    const bool forward = !is_nearer_to_end(list, value);
    EL_iterator iterator = forward ? DBLL_all_doubles(list) : DBLL_all_doubles_reversed(list);
    for (EL_node *position; DBLL_next_position(&iterator, &position);) {
        const neighbour met = compare(value_at(position), value, tolerance, forward);
        if (met == neighbour::near)
            return 0;
        if (met == neighbour::beyond) {
            forward ? DBLL_insert_before(list, position, value) : DBLL_insert_after(list, position, value);
            return 1;
        }
    }
    DBLL_add_double(list, value);
    return 0;
}

void DBLL_remove_double(DBLL_list *list, EL_node *position)
{
    EL_remove_item(list, position);
}

int DBLL_remove_at_index(DBLL_list *list, int32_t index)
{
    return EL_remove_at_index(list, index);
}

void DBLL_remove_double_occ(DBLL_list *list, double tolerance)
{
    DBLL_sort(list);
    EL_iterator iterator = DBLL_all_doubles(list);
    EL_node *kept, *position;
    if (!DBLL_next_position(&iterator, &kept))
        return;
    while (DBLL_next_position(&iterator, &position)) {
        if (!(distance_between(value_at(position), value_at(kept)) < tolerance))
            kept = position;
        else if (position != list->last)
            DBLL_remove_double(list, position);
        else if (kept != list->first)
            DBLL_remove_double(list, kept);
    }
    assert(mova::intact(mova::broken_invariant(*list)));
}

void DBLL_replace_double(EL_node *position, double value)
{
    EL_replace_item(position, &value, sizeof value);
}

void DBLL_replace_doubles_inbetween(DBLL_list *list, EL_node *from, EL_node *to, DBLL_list *source)
{
    EL_replace_items_inbetween(list, from, to, source, sizeof(double));
}

double DBLL_begin_value(const DBLL_list *list)
{
    return list->first ? value_at(list->first) : 0.0;
}

double DBLL_end_value(const DBLL_list *list)
{
    return list->last ? value_at(list->last) : 0.0;
}

void DBLL_set_begin_value(DBLL_list *list, double value)
{
    if (list->first)
        DBLL_replace_double(list->first, value);
}

void DBLL_set_end_value(DBLL_list *list, double value)
{
    if (list->last)
        DBLL_replace_double(list->last, value);
}

void DBLL_add_to_all(DBLL_list *list, double offset)
{
    EL_iterator iterator = DBLL_all_doubles(list);
    for (EL_node *position; DBLL_next_position(&iterator, &position);)
        DBLL_replace_double(position, value_at(position) + offset);
}

int32_t DBLL_find_index_of_nearest(const DBLL_list *list, double value, double distance, double *nearest_distance)
{
    double best = 2 * distance;
    int32_t best_index = -1;
    EL_iterator iterator = DBLL_all_doubles(list);
    double candidate;
    for (int32_t index = 0; DBLL_next_double(&iterator, &candidate); ++index) {
        const double candidate_distance = distance_between(candidate, value);
        if (candidate_distance < best) {
            best = candidate_distance;
            best_index = index;
        }
    }
    *nearest_distance = best;
    return best_index;
}

void DBLL_sort(DBLL_list *list)
{
    if (list->first == list->last || is_in_order(list))
        return;
    if (!sort_in_array(list)) {
        while (exchange_neighbours(list))
            continue;
    }
    assert(is_in_order(list));
}

EL_node *DBLL_advance(const DBLL_list *list, EL_node *position, int32_t steps)
{
    return EL_advance(list, position, steps);
}

void DBLL_reverse(DBLL_list *list)
{
    EL_reverse(list);
}

DBLL_list *DBLL_copy(DBLL_list *list)
{
    return EL_total_copy(list);
}

DBLL_list *DBLL_copy_inbetween(DBLL_list *list, EL_node *from, EL_node *to)
{
    return EL_total_copy_inbetween(list, from, to);
}

void DBLL_roll(DBLL_list *list, EL_node *position)
{
    EL_roll(list, position);
}

EL_iterator DBLL_all_doubles(const DBLL_list *list)
{
    return EL_all_items(list);
}

EL_iterator DBLL_all_doubles_reversed(const DBLL_list *list)
{
    return EL_all_items_reversed(list);
}

EL_iterator DBLL_all_doubles_inbetween(const DBLL_list *list, EL_node *from, EL_node *to)
{
    return EL_all_items_inbetween(list, from, to, 1);
}

EL_iterator DBLL_all_doubles_inbetween_reversed(const DBLL_list *list, EL_node *from, EL_node *to)
{
    return EL_all_items_inbetween(list, from, to, 0);
}

int DBLL_next_position(EL_iterator *iterator, EL_node **position)
{
    return EL_next_position(iterator, position);
}

int DBLL_next_double(EL_iterator *iterator, double *value)
{
    EL_node *position;
    if (!DBLL_next_position(iterator, &position))
        return 0;
    *value = value_at(position);
    return 1;
}
