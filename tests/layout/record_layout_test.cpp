/* SPDX-License-Identifier: MIT */
/* Every public record, field by field. On a 32-bit platform a word is four bytes and each record must have the layout that
   programs of the 32-bit system were compiled for, to the byte; on a 64-bit one the order of the fields is the same. */
#include <mova/container.h>
#include <mova/frame/host.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

namespace {

constexpr std::size_t word = sizeof(void *);

TEST(RecordLayout, MachineWordIsPointerSized)
{
    EXPECT_EQ(sizeof(mova_word), word);
    EXPECT_EQ(sizeof(mb_handle), 4u);
}

TEST(RecordLayout, GenericListHeadIsTwoLinksAndACount)
{
    EXPECT_EQ(offsetof(GL_list, first), 0u);
    EXPECT_EQ(offsetof(GL_list, last), word);
    EXPECT_EQ(offsetof(GL_list, count), 2 * word);
    EXPECT_EQ(sizeof(GL_list::count), 4u);
    EXPECT_EQ(sizeof(GL_list), 3 * word);
}

TEST(RecordLayout, GenericListNodeIsThreeWords)
{
    EXPECT_EQ(offsetof(GL_node, prev), 0u);
    EXPECT_EQ(offsetof(GL_node, next), word);
    EXPECT_EQ(offsetof(GL_node, item), 2 * word);
    EXPECT_EQ(sizeof(GL_node), 3 * word);
}

TEST(RecordLayout, GenericListIteratorIsFiveWords)
{
    EXPECT_EQ(offsetof(GL_iterator, current), 0u);
    EXPECT_EQ(offsetof(GL_iterator, next), word);
    EXPECT_EQ(offsetof(GL_iterator, end), 2 * word);
    EXPECT_EQ(offsetof(GL_iterator, forward), 3 * word);
    EXPECT_EQ(sizeof(GL_iterator::forward), 4u);
    EXPECT_EQ(offsetof(GL_iterator, test), 4 * word);
    EXPECT_EQ(sizeof(GL_iterator), 5 * word);
}

/* Two links, a 16-bit size, and two 32-bit words where their own size aligns them. */
TEST(RecordLayout, ElementListHeadIsTwoLinksASizeACountAndAFlag)
{
    EXPECT_EQ(offsetof(EL_list, first), 0u);
    EXPECT_EQ(offsetof(EL_list, last), word);
    EXPECT_EQ(offsetof(EL_list, element_size), 2 * word);
    EXPECT_EQ(sizeof(EL_list::element_size), 2u);
    EXPECT_EQ(offsetof(EL_list, count), 2 * word + 4);
    EXPECT_EQ(sizeof(EL_list::count), 4u);
    EXPECT_EQ(offsetof(EL_list, closed), 2 * word + 8);
    EXPECT_EQ(sizeof(EL_list::closed), 4u);
    EXPECT_EQ(sizeof(EL_list), word == 4 ? 20u : 32u);
}

TEST(RecordLayout, ElementListNodeIsTwoLinksWithTheElementAfterThem)
{
    EXPECT_EQ(offsetof(EL_node, prev), 0u);
    EXPECT_EQ(offsetof(EL_node, next), word);
    EXPECT_EQ(sizeof(EL_node), 2 * word);
    EL_node node;
    EXPECT_EQ(EL_element(&node), &node + 1);
}

TEST(RecordLayout, ElementListIteratorHasItsFieldsInOrder)
{
    EXPECT_EQ(offsetof(EL_iterator, current), 0u);
    EXPECT_EQ(offsetof(EL_iterator, next), word);
    EXPECT_EQ(offsetof(EL_iterator, end), 2 * word);
    EXPECT_EQ(offsetof(EL_iterator, forward), 3 * word);
    EXPECT_EQ(sizeof(EL_iterator::forward), 4u);
    EXPECT_EQ(offsetof(EL_iterator, element_size), 3 * word + 4);
    EXPECT_EQ(sizeof(EL_iterator::element_size), 4u);
    EXPECT_EQ(offsetof(EL_iterator, test), 3 * word + 8);
    EXPECT_EQ(sizeof(EL_iterator), 4 * word + 8);
}

TEST(RecordLayout, SimpleListHeadIsTwoLinksACountAndAFlag)
{
    EXPECT_EQ(offsetof(SL_list, first), 0u);
    EXPECT_EQ(offsetof(SL_list, last), word);
    EXPECT_EQ(offsetof(SL_list, count), 2 * word);
    EXPECT_EQ(sizeof(SL_list::count), 4u);
    EXPECT_EQ(offsetof(SL_list, closed), 2 * word + 4);
    EXPECT_EQ(sizeof(SL_list::closed), 4u);
    EXPECT_EQ(sizeof(SL_list), 2 * word + 8);
}

TEST(RecordLayout, SimpleListItemsBeginWithTwoLinks)
{
    EXPECT_EQ(offsetof(mova_sl_links, prev), 0u);
    EXPECT_EQ(offsetof(mova_sl_links, next), word);
    EXPECT_EQ(sizeof(mova_sl_links), 2 * word);
}

TEST(RecordLayout, SimpleListIteratorHasItsFieldsInOrder)
{
    EXPECT_EQ(offsetof(SL_iterator, current), 0u);
    EXPECT_EQ(offsetof(SL_iterator, upcoming), word);
    EXPECT_EQ(offsetof(SL_iterator, end), 2 * word);
    EXPECT_EQ(offsetof(SL_iterator, forward), 3 * word);
    EXPECT_EQ(sizeof(SL_iterator::forward), 4u);
    EXPECT_EQ(offsetof(SL_iterator, unused), 3 * word + 4);
    EXPECT_EQ(sizeof(SL_iterator::unused), 4u);
    EXPECT_EQ(offsetof(SL_iterator, test), 3 * word + 8);
    EXPECT_EQ(sizeof(SL_iterator), 4 * word + 8);
}

/* A pointer, three 32-bit words and two 16-bit ones, without a gap. */
TEST(RecordLayout, BlockArrayIsItsStorageItsSizesAndTwo16BitWords)
{
    EXPECT_EQ(offsetof(GB_block, data), 0u);
    EXPECT_EQ(offsetof(GB_block, element_size), word);
    EXPECT_EQ(sizeof(GB_block::element_size), 4u);
    EXPECT_EQ(offsetof(GB_block, count), word + 4);
    EXPECT_EQ(sizeof(GB_block::count), 4u);
    EXPECT_EQ(offsetof(GB_block, capacity), word + 8);
    EXPECT_EQ(sizeof(GB_block::capacity), 4u);
    EXPECT_EQ(offsetof(GB_block, increment), word + 12);
    EXPECT_EQ(sizeof(GB_block::increment), 2u);
    EXPECT_EQ(offsetof(GB_block, closed), word + 14);
    EXPECT_EQ(sizeof(GB_block::closed), 2u);
    EXPECT_EQ(sizeof(GB_block), word == 4 ? 20u : 24u);
}

TEST(RecordLayout, DynamicArrayHeadIsFour32BitWordsAndItsStorage)
{
    EXPECT_EQ(offsetof(DA_array, element_size), 0u);
    EXPECT_EQ(sizeof(DA_array::element_size), 4u);
    EXPECT_EQ(offsetof(DA_array, increment), 4u);
    EXPECT_EQ(sizeof(DA_array::increment), 4u);
    EXPECT_EQ(offsetof(DA_array, nalloc), 8u);
    EXPECT_EQ(sizeof(DA_array::nalloc), 4u);
    EXPECT_EQ(offsetof(DA_array, nitems), 12u);
    EXPECT_EQ(sizeof(DA_array::nitems), 4u);
    EXPECT_EQ(offsetof(DA_array, data), 16u);
    EXPECT_EQ(sizeof(DA_array), word == 4 ? 20u : 24u);
}

TEST(RecordLayout, DynamicArrayIteratorHasItsFieldsInOrder)
{
    EXPECT_EQ(offsetof(DA_iterator, array), 0u);
    EXPECT_EQ(offsetof(DA_iterator, forward), word);
    EXPECT_EQ(sizeof(DA_iterator::forward), 4u);
    EXPECT_EQ(offsetof(DA_iterator, current), word + 4);
    EXPECT_EQ(sizeof(DA_iterator::current), 4u);
    EXPECT_EQ(offsetof(DA_iterator, last), word + 8);
    EXPECT_EQ(sizeof(DA_iterator::last), 4u);
    EXPECT_EQ(offsetof(DA_iterator, test), word == 4 ? 16u : 24u);
    EXPECT_EQ(sizeof(DA_iterator), word == 4 ? 20u : 32u);
}

TEST(RecordLayout, IdTableIteratorIsTheStorageACountAndAnIndex)
{
    EXPECT_EQ(offsetof(io_lut_iterator, storage), 0u);
    EXPECT_EQ(offsetof(io_lut_iterator, count), word);
    EXPECT_EQ(sizeof(io_lut_iterator::count), 4u);
    EXPECT_EQ(offsetof(io_lut_iterator, next), word + 4);
    EXPECT_EQ(sizeof(io_lut_iterator::next), 4u);
    EXPECT_EQ(sizeof(io_lut_iterator), word + 8);
}

TEST(RecordLayout, SwapCacheHeadIsThreeWords)
{
    EXPECT_EQ(offsetof(cc_cache, first), 0u);
    EXPECT_EQ(offsetof(cc_cache, last), word);
    EXPECT_EQ(offsetof(cc_cache, pool), 2 * word);
    EXPECT_EQ(sizeof(cc_cache), 3 * word);
}

TEST(RecordLayout, SwapCacheEntryHasItsFieldsInOrder)
{
    EXPECT_EQ(offsetof(cc_entry, prev), 0u);
    EXPECT_EQ(offsetof(cc_entry, next), word);
    EXPECT_EQ(offsetof(cc_entry, item), 2 * word);
    EXPECT_EQ(offsetof(cc_entry, handle), 3 * word);
    EXPECT_EQ(sizeof(cc_entry::handle), 4u);
    EXPECT_EQ(offsetof(cc_entry, size_fn), 4 * word);
    EXPECT_EQ(offsetof(cc_entry, swap_in_fn), 5 * word);
    EXPECT_EQ(offsetof(cc_entry, write_back_fn), 6 * word);
    EXPECT_EQ(offsetof(cc_entry, release_fn), 7 * word);
    EXPECT_EQ(offsetof(cc_entry, status), 8 * word);
    EXPECT_EQ(sizeof(cc_entry::status), 1u);
    EXPECT_EQ(sizeof(cc_entry), 9 * word);
    EXPECT_EQ(sizeof(cc_debug), 4u);
}

TEST(RecordLayout, BalancedTreeHeadIsSixWords)
{
    EXPECT_EQ(offsetof(tree, root), 0u);
    EXPECT_EQ(offsetof(tree, first), word);
    EXPECT_EQ(offsetof(tree, last), 2 * word);
    EXPECT_EQ(offsetof(tree, compare), 3 * word);
    EXPECT_EQ(offsetof(tree, dupl_allowed), 4 * word);
    EXPECT_EQ(sizeof(tree::dupl_allowed), 4u);
    EXPECT_EQ(offsetof(tree, iterators), 5 * word);
    EXPECT_EQ(sizeof(tree), word == 4 ? 24u : 48u);
}

TEST(RecordLayout, BalancedTreeNodeIsSixWords)
{
    EXPECT_EQ(offsetof(tree_item, item), 0u);
    EXPECT_EQ(offsetof(tree_item, left), word);
    EXPECT_EQ(offsetof(tree_item, right), 2 * word);
    EXPECT_EQ(offsetof(tree_item, prev), 3 * word);
    EXPECT_EQ(offsetof(tree_item, next), 4 * word);
    EXPECT_EQ(offsetof(tree_item, balance), 5 * word);
    EXPECT_EQ(sizeof(tree_item::balance), 4u);
    EXPECT_EQ(sizeof(tree_item), word == 4 ? 24u : 48u);
}

TEST(RecordLayout, BalancedTreeIteratorIsFiveWords)
{
    EXPECT_EQ(offsetof(tree_iter, cursor), 0u);
    EXPECT_EQ(offsetof(tree_iter, current), word);
    EXPECT_EQ(offsetof(tree_iter, tree), 2 * word);
    EXPECT_EQ(offsetof(tree_iter, condition), 3 * word);
    EXPECT_EQ(offsetof(tree_iter, mode), 4 * word);
    EXPECT_EQ(sizeof(tree_iter::mode), 4u);
    EXPECT_EQ(sizeof(tree_iter), word == 4 ? 20u : 40u);
}

TEST(RecordLayout, HashTableIsEightNumbersAndTwoArrays)
{
    EXPECT_EQ(offsetof(HSH_table, minimum_size), 0u);
    EXPECT_EQ(offsetof(HSH_table, capacity), 4u);
    EXPECT_EQ(offsetof(HSH_table, count), 8u);
    EXPECT_EQ(offsetof(HSH_table, low_water_mark), 12u);
    EXPECT_EQ(offsetof(HSH_table, high_water_mark), 16u);
    EXPECT_EQ(offsetof(HSH_table, mask), 20u);
    EXPECT_EQ(offsetof(HSH_table, shift), 24u);
    EXPECT_EQ(offsetof(HSH_table, maximum_shift), 28u);
    EXPECT_EQ(offsetof(HSH_table, keys), 32u);
    EXPECT_EQ(offsetof(HSH_table, values), 32 + word);
    EXPECT_EQ(sizeof(HSH_table), 32 + 2 * word);
}

TEST(RecordLayout, HashTableIteratorIsATableAndAnIndex)
{
    EXPECT_EQ(offsetof(HSH_iterator, table), 0u);
    EXPECT_EQ(offsetof(HSH_iterator, index), word);
    EXPECT_EQ(sizeof(HSH_iterator::index), 4u);
    EXPECT_EQ(sizeof(HSH_iterator), 2 * word);
}

TEST(RecordLayout, ShownColoursAreASizeAndAPointerToThreeComponentsEach)
{
    EXPECT_EQ(offsetof(clut_colours, size), 0u);
    EXPECT_EQ(sizeof(clut_colours::size), 4u);
    EXPECT_EQ(offsetof(clut_colours, first), word);
    EXPECT_EQ(offsetof(clut_colour, red), 0u);
    EXPECT_EQ(offsetof(clut_colour, green), 2u);
    EXPECT_EQ(offsetof(clut_colour, blue), 4u);
    EXPECT_EQ(sizeof(clut_colour), 6u);
}

TEST(RecordLayout, PointerLookupIsThreeWords)
{
    EXPECT_EQ(offsetof(mova_lookup, front_key), 0u);
    EXPECT_EQ(offsetof(mova_lookup, front_value), word);
    EXPECT_EQ(offsetof(mova_lookup, table), 2 * word);
    EXPECT_EQ(sizeof(mova_lookup), 3 * word);
}

TEST(RecordLayout, ColourTableWordsAre32BitIntegersAndComponents16BitOnes)
{
    EXPECT_EQ(sizeof(clut_debug), 4u);
    EXPECT_EQ(sizeof(GE_WHITE), 4u);
    EXPECT_EQ(alignof(decltype(GE_WHITE)), 4u);
    EXPECT_TRUE((std::is_same_v<CLUT_callback, void (*)(int32_t, int16_t, int16_t, int16_t)>));
    EXPECT_TRUE((std::is_same_v<decltype(&RGBLUT_init), void (*)(int32_t, CLUT_callback, mova_word)>));
}

} // namespace
