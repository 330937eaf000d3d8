/* SPDX-License-Identifier: MIT */
/* Arrays of more than 4 GiB, on a host that maps them and a test that touches a few of their pages. */
#include <mova/arrays/block_array.h>
#include <mova/arrays/dynamic_array.h>
#include <mova/arrays/id_lookup_table.h>
#include <mova/frame/host.h>

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include <sys/mman.h>

namespace {

std::vector<std::string> calls;

void *mapped(void *address)
{
    if (address == MAP_FAILED)
        throw std::runtime_error("no address space");
    return address;
}

} // namespace

void *MM_alloc_item(size_t size)
{
    calls.push_back("alloc " + std::to_string(size));
    return mapped(mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
}

void MM_dealloc_item(void *item, size_t size)
{
    calls.push_back("dealloc " + std::to_string(size));
    munmap(item, size);
}

void *MM_realloc_item(void *item, size_t old_size, size_t new_size)
{
    calls.push_back("realloc " + std::to_string(old_size) + " -> " + std::to_string(new_size));
    return mapped(mremap(item, old_size, new_size, MREMAP_MAYMOVE));
}

void EX_raise_exception_line(const char *module, int32_t line, int32_t)
{
    throw std::runtime_error(module + std::to_string(line));
}

namespace {

constexpr size_t page = 4096;
constexpr int32_t four_gib = 1 << 20; /* in pages */

std::vector<char> page_of(char byte)
{
    return std::vector<char>(page, byte);
}

char byte_of(const void *data, int32_t index)
{
    const char *element = static_cast<const char *>(data) + static_cast<size_t>(index) * page;
    return element[0] == element[page - 1] ? element[0] : '?';
}

/* Growth zeroes what it adds, so the first four GiB are not added by growth. */
DA_array *array_of_pages()
{
    DA_array *array = DA_create(page, 4);
    array->nalloc = four_gib + 4;
    array->data = MM_alloc_item(static_cast<size_t>(array->nalloc) * page);
    calls.clear();
    return array;
}

TEST(LargeArray, ADynamicArrayReachesBeyond4GiB)
{
    DA_array *array = array_of_pages();
    DA_put_item(array, four_gib, page_of('a').data());
    EXPECT_EQ(byte_of(DA_data(array), four_gib), 'a');
    EXPECT_EQ(byte_of(DA_data(array), 0), 0);
    EXPECT_EQ(DA_get_item(array, four_gib), static_cast<char *>(DA_data(array)) + (size_t{1} << 32));
    EXPECT_EQ(DA_memsize(array), 4 * page);
    EXPECT_EQ(calls, std::vector<std::string>{});
    DA_release(array);
    EXPECT_EQ(calls.front(), "dealloc 4294983680");
}

TEST(LargeArray, ADynamicArrayGrowsBeyond4GiB)
{
    DA_array *array = array_of_pages();
    DA_setsize(array, four_gib + 3);
    DA_append(array, page_of('b').data(), 1);
    DA_append(array, page_of('c').data(), 1);
    EXPECT_EQ(calls, std::vector<std::string>{"realloc 4294983680 -> 4295000064"});
    DA_insert(array, four_gib + 3, page_of('i').data(), 1);
    DA_delete(array, four_gib + 1, 2);
    EXPECT_EQ(DA_nitems(array), four_gib + 4);
    for (auto [index, byte] : {std::pair{0, '\0'}, {1, 'i'}, {2, 'b'}, {3, 'c'}})
        EXPECT_EQ(byte_of(DA_data(array), four_gib + index), byte) << index;
    for (int32_t i = 0; i < 8; ++i)
        EXPECT_EQ(byte_of(DA_data(array), i), 0);
    DA_release(array);
}

/* Elements of 2 GiB, and those of the largest size there is, of which one byte each is touched. */
TEST(LargeArray, ElementsMayHave2GiBAndMore)
{
    for (const uint32_t size : {uint32_t{1} << 31, UINT32_MAX}) {
        GB_block block;
        calls.clear();
        GB_init(&block, size, 2);
        GB_set_number_of_elements(&block, 3);
        EXPECT_EQ(calls, (std::vector<std::string>{"alloc " + std::to_string(2 * size_t{size}),
                                                   "realloc " + std::to_string(2 * size_t{size}) + " -> " +
                                                       std::to_string(3 * size_t{size})}));
        DA_array array = {size, 1, 3, 3, block.data};
        EXPECT_EQ(DA_get_item(&array, 2), static_cast<char *>(block.data) + 2 * size_t{size});
        *static_cast<char *>(DA_get_item(&array, 2)) = 'x';
        EXPECT_EQ(DA_memsize(&array), static_cast<uint32_t>(3 * uint64_t{size}));
        void *element;
        DA_iterator iterator = DA_all_items(&array);
        for (size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(DA_next(&iterator, &element), 1);
            EXPECT_EQ(element, static_cast<char *>(block.data) + i * size);
        }
        GB_release(&block);
        EXPECT_EQ(calls.back(), "dealloc " + std::to_string(3 * size_t{size}));
    }
}

/* Ids as far as 2^31 - 1024 - 1: the increment comes on top. */
TEST(LargeArray, AnIdTableReachesItsLastId)
{
    DA_array *table = io_lut_create();
    DA_clear(table);
    table->nalloc = INT32_MAX - 1023;
    table->nitems = INT32_MAX - 1030;
    table->data = MM_alloc_item(static_cast<size_t>(table->nalloc) * sizeof(void *));
    char things[2];
    EXPECT_EQ(io_lut_add(table, &things[0]), INT32_MAX - 1030);
    io_lut_set(table, &things[1], INT32_MAX - 1024);
    EXPECT_EQ(DA_nitems(table), INT32_MAX - 1023);
    EXPECT_EQ(io_lut_get_ptr(table, INT32_MAX - 1030), &things[0]);
    EXPECT_EQ(io_lut_get_ptr(table, INT32_MAX - 1024), &things[1]);
    for (const int32_t none : {INT32_MIN, -1, 0, INT32_MAX - 1025, INT32_MAX - 1023, INT32_MAX})
        EXPECT_EQ(io_lut_look_ptr(table, none), nullptr) << none;
    io_lut_release(&table);
}

TEST(LargeArray, ABlockArrayGrowsBeyond4GiB)
{
    GB_block block;
    calls.clear();
    GB_init(&block, page, four_gib + 1);
    block.count = four_gib;
    for (char byte : {'a', 'b', 'c'})
        GB_append_after_last(&block, page_of(byte).data());
    EXPECT_EQ(calls, (std::vector<std::string>{"alloc 4294971392", "realloc 4294971392 -> 4295012352"}));
    GB_insert_item(&block, four_gib + 1, page_of('i').data());
    GB_remove_item(&block, four_gib + 2);
    GB_replace_item(&block, four_gib, page_of('r').data());
    for (auto [index, byte] : {std::pair{0, 'r'}, {1, 'i'}, {2, 'c'}})
        EXPECT_EQ(byte_of(block.data, four_gib + index), byte) << index;
    EXPECT_EQ(byte_of(block.data, 0), 0);
    GB_release(&block);
    EXPECT_EQ(calls.back(), "dealloc 4295012352");
}

} // namespace
