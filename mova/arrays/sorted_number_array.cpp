/* SPDX-License-Identifier: MIT */
#include <mova/arrays/sorted_number_array.h>

#include <algorithm>
#include <span>

#include <mova/arrays/internal/number_passes.h>
#include <mova/frame/internal/assert.h>

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

/* ---- searching ---- */

/* Where a number is, or where it belongs. */
struct place {
    int32_t index;
    bool found;
};

/* The probes are fixed: on an array that is not in order, which a roll leaves, they decide the answer. */
int32_t midpoint(int32_t low, int32_t high)
{
    return static_cast<int32_t>((static_cast<uint32_t>(low) + static_cast<uint32_t>(high)) / 2);
}

/* Makes `high` the index before `middle` where `number` belongs before `other`, else `low` the one after. */
void narrow(int32_t &low, int32_t &high, int32_t middle, int32_t number, int32_t other)
{
    const int32_t before = middle - 1, after = middle + 1;
#if defined(__x86_64__) || defined(__i386__)
    /* Compilers turn every way to say this into a branch, which the processor guesses wrong every other time. */
    asm("cmp %3, %2\n\tcmovl %4, %1\n\tcmovge %5, %0"
        : "+r"(low), "+&r"(high)
        : "r"(number), "r"(other), "r"(before), "r"(after)
        : "cc");
#else
    high = number < other ? before : high;
    low = number < other ? low : after;
#endif
}

/* Leaves the processor nothing to guess but where the search ends. */
place search_without_branches(const int32_t *numbers, int32_t count, int32_t number)
{
    int32_t low = 0, high = count - 1;
    while (high >= low) {
        const int32_t middle = midpoint(low, high), other = numbers[middle];
        narrow(low, high, middle, number, other);
        if (number == other)
            return {middle, true};
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

/* Whether a number may stand at `index`, by its two neighbours. So it is at the end of every search that found none, even
   of an array out of order: a probe met them both. */
[[maybe_unused]] bool belongs_at(const DA_array *array, int32_t index, int32_t number)
{
    const std::span<int32_t> numbers = numbers_of(array);
    const auto i = static_cast<size_t>(index);
    return (i == 0 || numbers[i - 1] < number) && (i == numbers.size() || number < numbers[i]);
}

/* ---- adapting ---- */

/* What there is to know before numbers are rolled. */
struct roll_survey {
    int32_t bound, greatest;
    int32_t last_below = 0; /* the index of the last number below `bound`, 0 where there is none */
    int32_t outside = 0;    /* negative where a number lies outside 0 … `greatest` */

    void operator()(int32_t number, int32_t index)
    {
        last_below = std::max(last_below, number < bound ? index : 0);
        outside |= number | wrapped(static_cast<uint32_t>(greatest) - static_cast<uint32_t>(number));
    }
};

/* As roll_any, for indices of an array of `count` entries and 0 <= `n` <= `count`: their sum is below twice the count. */
void roll_indices(std::span<int32_t> numbers, int32_t n, int32_t count)
{
    mova::for_each_number(numbers, [n, count](int32_t &number, int32_t) {
        const int32_t difference = number - n;
        number = difference + (difference < 0 ? count : 0);
    });
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
    const place at = search(array, number);
    if (at.found)
        return;
    assert(belongs_at(array, at.index, number));
    DA_insert(array, at.index, &number, 1);
}

void SA_remove_number(DA_array *array, int32_t number)
{
    const place at = search(array, number);
    if (at.found)
        DA_delete(array, at.index, 1);
}

int SA_check_number(const DA_array *array, int32_t number)
{
    return search(array, number).found ? 1 : 0;
}

/* An insertion and a removal move all entries from one position on by one place. Numbers below it stay, the others move
   with their entries, and none passes another: the order stays.

       companion             a b c d e               [1 3]
       insert x at 2         a b x c d e             [1 4]    3 >= 2: one more
       remove at 1           a x c d e               [3]      1 is taken out, 4 > 1: one less */
void SA_adapt_for_insert(DA_array *array, int32_t position)
{
    mova::for_each_number(numbers_of(array), [position](int32_t &number, int32_t) {
        number = wrapped(static_cast<uint32_t>(number) + (number >= position ? 1 : 0));
    });
}

void SA_adapt_for_remove(DA_array *array, int32_t position)
{
    SA_remove_number(array, position);
    mova::for_each_number(numbers_of(array), [position](int32_t &number, int32_t) {
        number = wrapped(static_cast<uint32_t>(number) - (number > position ? 1 : 0));
    });
}

/* A reversal and a roll move numbers past each other, so the array is put in order too: before the numbers change, since
   that takes a buffer, and where there is none nothing has happened yet. The result is the same as after: a number's
   change does not depend on its place.

       10 entries reversed           [1 2 5 7]
       1. reverse the array          [7 5 2 1]
       2. v becomes 10 - v - 1       [2 4 7 8] */
void SA_adapt_for_reverse(DA_array *array, int32_t count)
{
    /* 1. */
    DA_reverse(array);
    /* 2. */
    mova::for_each_number(numbers_of(array), [count](int32_t &number, int32_t) {
        number = wrapped(static_cast<uint32_t>(count) - static_cast<uint32_t>(number) - 1);
    });
}

/* A roll takes the first n entries of the companion to its end. A number below n goes up by as many as stay, all others
   go down by n:

       10 entries, n = 3             0 1 2|3 4 5 6 7 8 9  ->  3 4 5 6 7 8 9|0 1 2
                                     [1 2 5 7]
       1. survey the numbers         the last one below 3 is the 2, at index 1
       2. rotate the array by 1      [2 5 7 1]
       3. v becomes (v + 7) % 10     [9 2 4 8]

   Deliberately the array is rotated by that index, and not by how many numbers are below n: see the header. */
void SA_adapt_for_roll(DA_array *array, int32_t n, int32_t count)
{
    const std::span<int32_t> numbers = numbers_of(array);
    /* 1. */
    const roll_survey survey =
        mova::for_each_number(numbers, roll_survey{n, wrapped(static_cast<uint32_t>(count) - 1)});
    /* 2. */
    if (survey.last_below > 0)
        DA_roll(array, survey.last_below);
    /* 3. Among the companion's own indices the remainder takes no division. */
    if (n >= 0 && n <= count && survey.outside >= 0)
        roll_indices(numbers, n, count);
    else
        roll_any(numbers, n, count);
}
