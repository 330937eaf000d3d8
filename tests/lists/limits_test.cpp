/* SPDX-License-Identifier: MIT */
/* Lists whose count is written to the largest that there is, and elements of the largest sizes. */
#include <mova/lists/double_list.h>
#include <mova/lists/element_list.h>
#include <mova/lists/element_stack.h>
#include <mova/lists/generic_list.h>
#include <mova/lists/simple_list.h>

#include <tests/support/recording_host_test_case.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

class ListLimits : public mova::test::recording_host_test_case {};

char item;
const double value = 1;

/* Each inserts one into a list of one. */
void (*const insert_into_generic_list[])(GL_list *) = {
    [](GL_list *list) { GL_append_after_last(list, nullptr); },
    [](GL_list *list) { GL_insert_before_first(list, nullptr); },
    [](GL_list *list) { GL_insert_before(list, list->first, nullptr); },
    [](GL_list *list) { GL_insert_after(list, list->first, nullptr); },
    [](GL_list *list) { GL_insert_unique(list, nullptr); },
};

void (*const insert_into_element_list[])(EL_list *) = {
    [](EL_list *list) { EL_append_after_last(list, &value); },
    [](EL_list *list) { EL_insert_before_first(list, &value); },
    [](EL_list *list) { EL_insert_before(list, list->first, &value); },
    [](EL_list *list) { EL_insert_after(list, list->first, &value); },
    [](EL_list *list) { EL_insert_before_index(list, 0, &value); },
    [](EL_list *list) { EL_insert_after_index(list, 0, &value); },
    [](EL_list *list) { ES_push(list, &value); },
    [](EL_list *list) { DBLL_add_double(list, 1); },
    [](EL_list *list) { DBLL_add_double_unique(list, 2, 0); },
};

/* An item of a simple list. */
struct linked {
    linked *prev, *next;
};
linked items[2];

void (*const insert_into_simple_list[])(SL_list *) = {
    [](SL_list *list) { SL_append_after_last(list, &items[1]); },
    [](SL_list *list) { SL_insert_before_first(list, &items[1]); },
    [](SL_list *list) { SL_insert_before(list, &items[0], &items[1]); },
    [](SL_list *list) { SL_insert_after(list, &items[0], &items[1]); },
    [](SL_list *list) { SL_insert_before_index(list, 0, &items[1]); },
    [](SL_list *list) { SL_insert_after_index(list, 0, &items[1]); },
    [](SL_list *list) { SL_insert_unique(list, &items[1]); },
};

TEST_F(ListLimits, ACountReaches2147483647AndComesBack)
{
    for (const auto insert : insert_into_generic_list) {
        GL_list *list = GL_create();
        GL_append_after_last(list, &item);
        list->count = INT32_MAX - 1;
        insert(list);
        EXPECT_EQ(GL_count_items(list), INT32_MAX);
        GL_remove_item(list, list->last);
        EXPECT_EQ(GL_count_items(list), INT32_MAX - 1);
        list->count = 1;
        GL_release(&list);
    }
    for (const auto insert : insert_into_element_list) {
        EL_list *list = EL_create(sizeof(double));
        EL_append_after_last(list, &value);
        list->count = INT32_MAX - 1;
        insert(list);
        EXPECT_EQ(EL_count_items(list), INT32_MAX);
        EXPECT_EQ(ES_count_items(list), INT32_MAX);
        EXPECT_EQ(DBLL_size(list), INT32_MAX);
        EL_remove_item(list, list->last);
        EXPECT_EQ(EL_count_items(list), INT32_MAX - 1);
        list->count = 1;
        EL_release(&list);
    }
    for (const auto insert : insert_into_simple_list) {
        SL_list *list = SL_create();
        SL_append_after_last(list, &items[0]);
        list->count = INT32_MAX - 1;
        insert(list);
        EXPECT_EQ(SL_count_items(list), INT32_MAX);
        SL_remove_item(list, &items[1]);
        EXPECT_EQ(SL_count_items(list), INT32_MAX - 1);
        SL_remove_item(list, &items[0]);
        list->count = 0;
        SL_release(&list);
    }
}

TEST_F(ListLimits, JoinedListsHave2147483647Nodes)
{
    EL_list *list = EL_create(sizeof(double)), *other = EL_create(sizeof(double));
    EL_append_after_last(list, &value);
    EL_append_after_last(other, &value);
    list->count = INT32_MAX - 2;
    other->count = 2;
    EL_append_list(list, &other);
    EXPECT_EQ(EL_count_items(list), INT32_MAX);
    list->count = 2;
    EL_release(&list);
}

TEST_F(ListLimits, ReportedSizesWrapAround)
{
    GL_list *list = GL_create();
    for (int i = 0; i < 3; ++i)
        GL_append_after_last(list, nullptr);
    EXPECT_EQ(GL_check(list, [](void *) { return INT32_MAX; }), static_cast<int32_t>(12 + 3 * (12 + 0x7FFFFFFFu)));
    GL_release(&list);
    DBLL_list *doubles = DBLL_create();
    doubles->count = INT32_MAX;
    EXPECT_EQ(DBLL_check(doubles), -16);
    doubles->count = 1 << 28;
    EXPECT_EQ(DBLL_check(doubles), 0);
    doubles->count = 0;
    DBLL_release(&doubles);
}

TEST_F(ListLimits, AnIndexMayBeAnyNumber)
{
    EL_list *list = EL_create(sizeof(double));
    EL_append_after_last(list, &value);
    for (const int32_t index : {INT32_MIN, -1, 1, INT32_MAX}) {
        EXPECT_EQ(EL_get_pos_at_index(list, index), nullptr);
        EXPECT_EQ(EL_get_item_at_index(list, index), nullptr);
        EXPECT_EQ(EL_insert_before_index(list, index, &value), nullptr);
        EXPECT_EQ(EL_insert_after_index(list, index, &value), nullptr);
        EXPECT_EQ(EL_remove_at_index(list, index), 0);
        EXPECT_EQ(DBLL_insert_after_index(list, index, 1), nullptr);
    }
    for (const int32_t steps : {INT32_MIN, INT32_MAX})
        EXPECT_EQ(EL_advance(list, list->first, steps), nullptr);
    EL_release(&list);
    SL_list *linked_list = SL_create();
    SL_append_after_last(linked_list, &items[0]);
    for (const int32_t index : {INT32_MIN, -1, 1, INT32_MAX}) {
        EXPECT_EQ(SL_pos_at_index(linked_list, index), nullptr);
        EXPECT_EQ(SL_insert_before_index(linked_list, index, &items[1]), 0);
        EXPECT_EQ(SL_insert_after_index(linked_list, index, &items[1]), 0);
        EXPECT_EQ(SL_remove_at_index(linked_list, index), 0);
    }
    for (const int32_t steps : {INT32_MIN, INT32_MAX})
        EXPECT_EQ(SL_advance(linked_list, &items[0], steps), nullptr);
    SL_remove_item(linked_list, &items[0]);
    SL_release(&linked_list);
}

TEST_F(ListLimits, ElementsHave65535BytesAtMost)
{
    for (const uint32_t size : {65535u, 0xFFFFFFFFu}) {
        const std::string largest(65535, 'x');
        EL_list *list = EL_create(size);
        EXPECT_EQ(list->element_size, 65535);
        EL_node *node = EL_append_after_last(list, largest.data());
        EXPECT_EQ(std::memcmp(EL_element(node), largest.data(), largest.size()), 0);
        EXPECT_EQ(host.size_of(node), sizeof(EL_node) + 65535);
        std::string popped(65535, ' ');
        EXPECT_EQ(ES_pop(list, popped.data()), 1);
        EXPECT_EQ(popped, largest);
        EL_release(&list);
    }
    for (const uint32_t size : {65536u, 0x80000000u}) {
        EL_list *list = EL_create(size);
        EXPECT_EQ(list->element_size, 0);
        EXPECT_EQ(host.size_of(EL_append_after_last(list, nullptr)), sizeof(EL_node));
        EL_release(&list);
    }
}

} // namespace
