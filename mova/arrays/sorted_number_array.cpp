#include <mova/arrays/sorted_number_array.h>

#include <algorithm>
#include <span>

namespace {

std::span<int32_t> numbers_of(const DA_array *array)
{
    return {static_cast<int32_t *>(DA_data(array)), static_cast<size_t>(DA_nitems(array))};
}

/* In 32 bits, around the ends of their range. */
int32_t wrapped(uint32_t number)
{
    return static_cast<int32_t>(number);
}

/* Where a number is, or where it belongs. */
struct place {
    int32_t index;
    bool found;
};

/* The probes are part of the design: on an array that is not in order, which a roll leaves, they decide the answer. */
int32_t midpoint(int32_t low, int32_t high)
{
    return static_cast<int32_t>((static_cast<uint32_t>(low) + static_cast<uint32_t>(high)) / 2);
}

/* Leaves the processor nothing to guess but where the search ends. */
place search_without_branches(const int32_t *numbers, int32_t count, int32_t number)
{
    int32_t low = 0, high = count - 1;
    while (high >= low) {
        const int32_t middle = midpoint(low, high);
        if (number == numbers[middle])
            return {middle, true};
        const bool before = number < numbers[middle];
        high = before ? middle - 1 : high;
        low = before ? low : middle + 1;
    }
    return {low, false};
}

/* Lets the processor guess, and so fetch ahead of the answer. */
place search_with_branches(const int32_t *numbers, int32_t count, int32_t number)
{
    int32_t low = 0, high = count - 1;
    while (high >= low) {
        const int32_t middle = midpoint(low, high);
        if (number < numbers[middle])
            high = middle - 1;
        else if (numbers[middle] < number)
            low = middle + 1;
        else
            return {middle, true};
    }
    return {low, false};
}

/* Above this many numbers (2 MiB) they are no longer in the caches near the processor. */
constexpr int32_t near_count = 1 << 19;

place search(const DA_array *array, int32_t number)
{
    const auto *numbers = static_cast<const int32_t *>(DA_data(array));
    const int32_t count = DA_nitems(array);
    return count <= near_count ? search_without_branches(numbers, count, number)
                               : search_with_branches(numbers, count, number);
}

/* ---- rolling ---- */

/* The index of the last number below `bound`, 0 where there is none. */
int32_t last_below(std::span<const int32_t> numbers, int32_t bound)
{
    int32_t last = 0;
    for (size_t i = 0; i < numbers.size(); ++i)
        last = numbers[i] < bound ? static_cast<int32_t>(i) : last;
    return last;
}

bool all_are_indices(std::span<const int32_t> numbers, int32_t count)
{
    uint32_t outside = 0;
    for (int32_t number : numbers)
        outside |= static_cast<uint32_t>(number) >= static_cast<uint32_t>(count);
    return count >= 0 && outside == 0;
}

/* As roll_any, for indices of an array of `count` entries: their sum with `count` - n is below twice the count. */
void roll_indices(std::span<int32_t> numbers, uint32_t n, uint32_t count)
{
    for (int32_t &number : numbers) {
        const uint32_t sum = static_cast<uint32_t>(number) + (count - n);
        number = wrapped(std::min(sum, sum - count));
    }
}

/* The remainder has the sign of the sum. */
void roll_any(std::span<int32_t> numbers, int64_t n, int64_t count)
{
    for (int32_t &number : numbers)
        number = static_cast<int32_t>((number + count - n) % count);
}

} // namespace

void SA_add_number(DA_array *array, int32_t number)
{
    const place place = search(array, number);
    if (!place.found)
        DA_insert(array, place.index, &number, 1);
}

void SA_remove_number(DA_array *array, int32_t number)
{
    const place place = search(array, number);
    if (place.found)
        DA_delete(array, place.index, 1);
}

int SA_check_number(const DA_array *array, int32_t number)
{
    return search(array, number).found ? 1 : 0;
}

void SA_adapt_for_insert(DA_array *array, int32_t position)
{
    for (int32_t &number : numbers_of(array))
        number = wrapped(static_cast<uint32_t>(number) + (number >= position ? 1 : 0));
}

void SA_adapt_for_remove(DA_array *array, int32_t position)
{
    SA_remove_number(array, position);
    for (int32_t &number : numbers_of(array))
        number = wrapped(static_cast<uint32_t>(number) - (number > position ? 1 : 0));
}

void SA_adapt_for_reverse(DA_array *array, int32_t count)
{
    for (int32_t &number : numbers_of(array))
        number = wrapped(static_cast<uint32_t>(count) - static_cast<uint32_t>(number) - 1);
    DA_reverse(array);
}

void SA_adapt_for_roll(DA_array *array, int32_t n, int32_t count)
{
    const std::span<int32_t> numbers = numbers_of(array);
    /* Deliberately the index of that number, not how many there are: see the header. */
    const int32_t first = last_below(numbers, n);
    if (n >= 0 && n <= count && all_are_indices(numbers, count))
        roll_indices(numbers, static_cast<uint32_t>(n), static_cast<uint32_t>(count));
    else
        roll_any(numbers, n, count);
    if (first > 0)
        DA_roll(array, first);
}
