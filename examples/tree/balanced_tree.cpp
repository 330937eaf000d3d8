/* SPDX-License-Identifier: MIT */
/* Words in order, some of them removed while they are walked. */
#include <mova/tree/balanced_tree.h>
#include <cstdio>
#include <cstring>

static int32_t by_alphabet(void *a, void *b)
{
    return std::strcmp(static_cast<const char *>(a), static_cast<const char *>(b));
}

int main()
{
    char words[][8] = {"pear", "apple", "plum", "cherry", "quince"};
    tree *sorted = GT_create_with_dupl_not_allowed(by_alphabet);
    for (char *word : words)
        GT_insert_item(sorted, word);
    tree_iter *iterator = GT_all_items(sorted);
    for (tree_item *position; GT_next_position(iterator, &position);) {
        const char *word = static_cast<const char *>(position->item);
        if (word[0] == 'p')
            GT_remove_item(sorted, position);
        else
            std::printf("%s\n", word);
    }
    std::printf("%d left\n", GT_count_items(sorted));
    GT_release(&sorted);
}
