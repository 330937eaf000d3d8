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

TEST(RecordLayout, ElementListNodeIsTwoLinksWithTheElementBehindThem)
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

TEST(RecordLayout, ColourTableWordsAre32BitIntegersAndComponents16BitOnes)
{
    EXPECT_EQ(sizeof(clut_debug), 4u);
    EXPECT_EQ(sizeof(GE_WHITE), 4u);
    EXPECT_EQ(alignof(decltype(GE_WHITE)), 4u);
    EXPECT_TRUE((std::is_same_v<CLUT_callback, void (*)(int32_t, int16_t, int16_t, int16_t)>));
    EXPECT_TRUE((std::is_same_v<decltype(&RGBLUT_init), void (*)(int32_t, CLUT_callback, mova_word)>));
}

} // namespace
