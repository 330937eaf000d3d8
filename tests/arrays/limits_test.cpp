/* SPDX-License-Identifier: MIT */
/* Arrays of the most elements that there are: of no bytes each, so that they take no room. */
#include <mova/arrays/block_array.h>
#include <mova/arrays/dynamic_array.h>

#include <tests/support/recording_host_test_case.h>

#include <cstring>

namespace {

class ArrayLimits : public mova::test::recording_host_test_case {
protected:
    /* With room for `capacity` elements, of which `count` are there. */
    GB_block block_of(int32_t count, int32_t capacity)
    {
        GB_block block;
        GB_init(&block, 0, capacity);
        block.count = count;
        return block;
    }
};

TEST_F(ArrayLimits, ABlockArrayFillsUpTo2147483647Elements)
{
    GB_block block = block_of(INT32_MAX - 3, INT32_MAX - 3);
    GB_set_inc(&block, 3);
    EXPECT_EQ(GB_append_after_last(&block, ""), INT32_MAX - 3);
    EXPECT_EQ(block.capacity, INT32_MAX);
    GB_insert_item(&block, 5, "");
    GB_insert_item(&block, INT32_MAX - 1, "");
    EXPECT_EQ(GB_count_items(&block), INT32_MAX);
    GB_remove_item(&block, 0);
    GB_remove_item(&block, INT32_MAX - 2);
    EXPECT_EQ(GB_count_items(&block), INT32_MAX - 2);
    GB_release(&block);
}

TEST_F(ArrayLimits, ABlockArrayGrowsToExactly2147483647)
{
    GB_block block = block_of(1, 1);
    GB_set_number_of_elements(&block, INT32_MAX);
    EXPECT_EQ(block.capacity, INT32_MAX);
    GB_set_number_of_elements(&block, INT32_MIN);
    EXPECT_EQ(block.capacity, INT32_MAX);
    GB_release(&block);
}

TEST_F(ArrayLimits, BlockArraysAreJoinedToAndSplitFrom2147483647Elements)
{
    GB_block block = block_of(INT32_MAX - 7, INT32_MAX - 7), other = block_of(7, 7), part;
    EXPECT_EQ(GB_append_block(&block, &other), INT32_MAX - 7);
    EXPECT_EQ(block.count, INT32_MAX);
    EXPECT_EQ(block.capacity, INT32_MAX);
    GB_remove_and_get_end_part(&part, &block, 1);
    EXPECT_EQ(block.count, 2);
    EXPECT_EQ(part.count, INT32_MAX - 1);
    GB_copy_into(&block, &part);
    EXPECT_EQ(block.count, INT32_MAX - 1);
    GB_release(&part);
    GB_copy(&part, &block);
    EXPECT_EQ(part.capacity, INT32_MAX - 1);
    GB_release(&part);
    GB_release(&block);
}

TEST_F(ArrayLimits, PositionsInABlockArrayAreCountedInMoreThan32Bits)
{
    GB_block block = block_of(INT32_MAX, INT32_MAX);
    EXPECT_EQ(GB_advance(&block, INT32_MAX - 1, INT32_MAX), -1);
    EXPECT_EQ(GB_advance(&block, 0, INT32_MIN), -1);
    GB_set_closed(&block);
    EXPECT_EQ(GB_advance(&block, INT32_MAX - 1, INT32_MAX), INT32_MAX - 1);
    EXPECT_EQ(GB_advance(&block, 1, INT32_MIN), 0);
    EXPECT_EQ(GB_advance(&block, INT32_MAX - 1, 1), 0);
    GB_roll(&block, INT32_MIN);
    GB_roll(&block, INT32_MAX - 1);
    GB_make_empty(&block);
    GB_release(&block);
}

TEST_F(ArrayLimits, ADynamicArrayFillsUpTo2147483646Elements)
{
    DA_array *array = DA_create(0, 1);
    DA_setsize(array, INT32_MAX - 3);
    EXPECT_EQ(DA_nalloc(array), INT32_MAX - 2);
    DA_append(array, "", 1);
    DA_insert(array, 0, "", 1);
    DA_put_item(array, INT32_MAX - 2, "");
    EXPECT_EQ(DA_nitems(array), INT32_MAX - 1);
    EXPECT_EQ(DA_nalloc(array), INT32_MAX);
    DA_get_item(array, INT32_MAX - 2);
    DA_delete(array, INT32_MAX - 2, 1);
    DA_delete(array, 0, INT32_MAX - 3);
    EXPECT_EQ(DA_nitems(array), 1);
    DA_release(array);
}

TEST_F(ArrayLimits, ADynamicArrayTakes2147483646ElementsAtOnce)
{
    DA_array *array = DA_create(0, 1);
    DA_append(array, "", INT32_MAX - 1);
    EXPECT_EQ(DA_nitems(array), INT32_MAX - 1);
    DA_array *copy = DA_copy(array);
    EXPECT_EQ(DA_equal(array, copy), 1);
    DA_roll(array, INT32_MIN);
    DA_truncate(array, INT32_MAX);
    EXPECT_EQ(DA_nitems(array), INT32_MAX - 1);
    DA_release(copy);
    DA_release(array);
}

/* The last step goes past the last index that there is. */
TEST_F(ArrayLimits, AWalkEndsAtTheLastElementsOfTheLongestArray)
{
    DA_array *array = DA_create(0, 1);
    DA_setsize(array, INT32_MAX - 1);
    DA_iterator iterator = DA_all_items(array);
    EXPECT_EQ(iterator.last, INT32_MAX - 2);
    iterator.current = INT32_MAX - 3;
    void *element;
    EXPECT_EQ(DA_next(&iterator, &element), 1);
    EXPECT_EQ(DA_next(&iterator, &element), 1);
    EXPECT_EQ(DA_next(&iterator, &element), 0);
    DA_release(array);
}

TEST_F(ArrayLimits, ReportedSizesWrapAround)
{
    DA_array *array = DA_create(0x10001, 1);
    const int32_t counts[] = {0xFFFF, 0x10000, INT32_MAX};
    char anything;
    array->data = &anything;
    for (const int32_t count : counts) {
        array->nalloc = count;
        const auto bytes = static_cast<uint32_t>(uint64_t{0x10001} * static_cast<uint32_t>(count));
        EXPECT_EQ(DA_memsize(array), bytes);
        EXPECT_EQ(DA_check(array), bytes + 20);
    }
    array->data = nullptr;
    array->nalloc = 0;
    DA_release(array);
}

TEST_F(ArrayLimits, ElementsMayHave65535And65536Bytes)
{
    for (const uint32_t size : {65535u, 65536u}) {
        const std::string a(size, 'a'), b(size, 'b');
        GB_block block;
        GB_init(&block, size, 1);
        GB_append_after_last(&block, a.data());
        GB_append_after_last(&block, b.data());
        GB_reverse(&block);
        EXPECT_EQ(std::memcmp(block.data, b.data(), size), 0);
        EXPECT_EQ(std::memcmp(static_cast<char *>(block.data) + size, a.data(), size), 0);
        GB_release(&block);
        DA_array *array = DA_create(size, 1);
        DA_append(array, a.data(), 1);
        DA_insert(array, 0, b.data(), 1);
        DA_roll(array, 1);
        EXPECT_EQ(std::memcmp(DA_get_item(array, 0), a.data(), size), 0);
        EXPECT_EQ(std::memcmp(DA_get_item(array, 1), b.data(), size), 0);
        DA_release(array);
    }
}

} // namespace
