/* SPDX-License-Identifier: MIT */
/* How high trees of so many items become, on the default host: no higher than 1.44 log2(n + 2). */
#include <mova/tree/balanced_tree.h>
#include <mova/tree/internal/invariants.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <random>
#include <vector>

namespace {

int32_t compare_words(void *a, void *b)
{
    return (a > b) - (a < b);
}

/* The nth item of so many: each of 1 to `count` once. */
using order = intptr_t (*)(intptr_t n, intptr_t count);

intptr_t at_random(intptr_t n, intptr_t count)
{
    static const std::vector<int32_t> numbers = [count] {
        std::vector<int32_t> all(static_cast<std::size_t>(count));
        std::iota(all.begin(), all.end(), 1);
        std::shuffle(all.begin(), all.end(), std::mt19937(1));
        return all;
    }();
    return numbers[static_cast<std::size_t>(n)];
}

/* 1, count, 2, count - 1 and so on. */
intptr_t from_both_ends(intptr_t n, intptr_t count)
{
    return n % 2 == 0 ? n / 2 + 1 : count - n / 2;
}

/* From the middle to both sides. */
intptr_t zigzag(intptr_t n, intptr_t count)
{
    const intptr_t middle = (count + 1) / 2;
    return n % 2 == 0 ? middle - n / 2 : middle + n / 2 + 1;
}

const struct {
    const char *name;
    order item;
} orders[] = {
    {"ascending", [](intptr_t n, intptr_t) { return n + 1; }},
    {"at random", at_random},
    {"from both ends", from_both_ends},
    {"zigzag", zigzag},
};

/* Returns whether the tree is sound and low enough, with all its items and with a third of them gone. */
bool is_low(const char *name, order item, intptr_t count)
{
    GT_tree *t = GT_create_with_dupl_not_allowed(compare_words);
    for (intptr_t n = 0; n < count; ++n)
        GT_insert_item(t, reinterpret_cast<void *>(item(n, count)));
    const auto height_is_low = [&](const char *what) {
        const int32_t items = GT_count_items(t), height = mova::balanced_height(t->root);
        const double bound = 1.44 * std::log2(items + 2.0);
        std::printf("%-15s %s: %d items, height %d of %.1f\n", name, what, items, height, bound);
        return height > 0 && height <= bound && mova::broken_invariant(*t, compare_words) == 0;
    };
    bool low = height_is_low("inserted") && GT_count_items(t) == count;
    for (intptr_t n = 0; n < count / 3; ++n)
        GT_remove_first_item(t);
    low = height_is_low("a third removed") && low;
    GT_release(&t);
    return low;
}

} // namespace

int main(int argc, char **argv)
{
    const intptr_t count = argc == 2 ? std::strtol(argv[1], nullptr, 10) : 0;
    if (count <= 0) {
        std::fprintf(stderr, "usage: height_of_large_trees COUNT\n");
        return 2;
    }
    bool low = true;
    for (const auto &[name, item] : orders)
        low &= is_low(name, item, count);
    return low ? 0 : 1;
}
