/* SPDX-License-Identifier: MIT */
/* What would be larger than a block can be, on 32-bit. */
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include <mova/arrays/block_array.h>
#include <mova/arrays/dynamic_array.h>
#include <mova/checked/checked.h>
#include <mova/hash/hash_table.h>
#include <mova/lists/element_list.h>
#include <mova/lists/element_stack.h>

namespace {

struct misuse {
    std::string what;
};

/* The call is not made. */
void throw_it(const mova_misuse *found, void *)
{
    throw misuse{std::string(found->function) + ": " + found->what};
}

std::string said_of(void (*call)())
{
    mova_checked_set_receiver(throw_it, nullptr);
    std::string said;
    try {
        call();
    } catch (const misuse &found) {
        said = found.what;
    }
    mova_checked_set_receiver(nullptr, nullptr);
    return said;
}

constexpr uint32_t large = 1u << 20;
GB_block block;

struct size {
    void (*call)();
    const char *expected;
};

const size sizes[] = {
    {[] { (void)!EL_create(UINT32_MAX - 4); }, "EL_create: the elements would be larger than a block can be"},
    {[] { (void)!ES_create(UINT32_MAX); }, "ES_create: the elements would be larger than a block can be"},
    {[] { (void)!HSH_create(1u << 30, 0); }, "HSH_create: the size is above 2^29"},
    {[] { DA_extend(DA_create(large, 1), 4096); }, "DA_extend: the array would be larger than a block can be"},
    {[] { GB_init(&block, large, 4096); }, "GB_init: the array would be larger than a block can be"},
    {[] {
         GB_init(&block, large, 1);
         GB_set_number_of_elements(&block, 4096);
     },
     "GB_set_number_of_elements: the array would be larger than a block can be"},
    {[] {
         GB_init(&block, large, 1);
         GB_set_inc(&block, 4095);
         static const char element[large] = "";
         GB_append_after_last(&block, element);
         GB_append_after_last(&block, element);
     },
     "GB_append_after_last: the array would be larger than a block can be"},
};

TEST(Sizes, ThatNoBlockCanHaveAreMisuses)
{
    for (const size &each : sizes)
        EXPECT_EQ(said_of(each.call), each.expected);
}

} // namespace
