/* SPDX-License-Identifier: MIT */
/* The sizes that the arrays ask the host for, where a host might not expect them. */
#include <mova/arrays/block_array.h>
#include <mova/arrays/dynamic_array.h>

#include <tests/support/recording_host_test_case.h>

namespace {

using mova::test::log;

class RequestedSizes : public mova::test::recording_host_test_case {};

TEST_F(RequestedSizes, ADynamicArrayOfElementsOfNoBytesAsksForBlocksOfNoBytes)
{
    DA_array *array = DA_create(0, 1);
    host.take_log();
    DA_append(array, "", 1);
    DA_append(array, "", 2);
    DA_reverse(array);
    DA_clear(array);
    EXPECT_EQ(host.take_log(),
              (log{"alloc 0 = #2", "realloc #2 0 -> 0 = #3", "alloc 0 = #4", "dealloc #4 0", "dealloc #3 0"}));
    DA_release(array);
}

TEST_F(RequestedSizes, ABlockArrayOfElementsOfNoBytesAsksForBlocksOfNoBytes)
{
    GB_block block;
    GB_init(&block, 0, 1);
    GB_append_after_last(&block, "");
    GB_append_after_last(&block, "");
    GB_release(&block);
    EXPECT_EQ(host.take_log(), (log{"alloc 0 = #1", "realloc #1 0 -> 0 = #2", "dealloc #2 0"}));
}

TEST_F(RequestedSizes, ABlockArrayHasItsStorageMadeSmallerToo)
{
    GB_block block;
    GB_init(&block, 4, 10);
    GB_set_number_of_elements(&block, 3);
    GB_release(&block);
    EXPECT_EQ(host.take_log(), (log{"alloc 40 = #1", "realloc #1 40 -> 12 = #2", "dealloc #2 12"}));
}

TEST_F(RequestedSizes, ADynamicArrayForgetsItsBlockWhereAReallocationAnswersNull)
{
    DA_array *array = DA_create(4, 1);
    DA_setsize(array, 1);
    const void *block = DA_data(array);
    host.take_log();
    host.set_raise_mode(mova::test::raise_mode::returns);
    host.fail_allocation(1);
    DA_setsize(array, 2);
    DA_release(array);
    EXPECT_EQ(host.take_log(), (log{"realloc #2 8 -> 12 = null", "raise darray 111 4197",
                                    "dealloc #1 " + std::to_string(sizeof(DA_array))}));
    EXPECT_TRUE(host.is_live(block));
    MM_dealloc_item(const_cast<void *>(block), 8);
}

} // namespace
