/* SPDX-License-Identifier: MIT */
/* A tree of a million items, on the default host. */
#include <mova/tree/balanced_tree.h>
#include <mova/tree/internal/invariants.h>

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace {

constexpr std::size_t count = 1000000;

int32_t compare_numbers(void *a, void *b)
{
    const int32_t left = *static_cast<int32_t *>(a), right = *static_cast<int32_t *>(b);
    return (left > right) - (left < right);
}

TEST(LargeTree, AMillionItemsAreInsertedInOrderWalkedAndHalfRemoved)
{
    std::vector<int32_t> numbers(count);
    std::iota(numbers.begin(), numbers.end(), 0);
    tree *t = GT_create_with_dupl_not_allowed(compare_numbers);
    for (int32_t &number : numbers)
        GT_insert_item(t, &number);
    EXPECT_EQ(mova::balanced_height(t->root), 20);
    tree_iter *iterator = GT_all_items(t);
    int32_t expected = 0;
    for (tree_item *position; GT_next_position(iterator, &position); ++expected) {
        ASSERT_EQ(position->item, &numbers[static_cast<std::size_t>(expected)]);
        if (expected % 2 == 0)
            GT_remove_item(t, position);
    }
    EXPECT_EQ(expected, static_cast<int32_t>(count));
    EXPECT_EQ(GT_count_items(t), static_cast<int32_t>(count / 2));
    EXPECT_EQ(mova::broken_invariant(*t, compare_numbers), 0);
    GT_release(&t);
}

} // namespace
