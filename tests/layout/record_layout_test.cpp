/* Every public record, field by field. On a 32-bit platform a word is four bytes and each record must have the layout that
   programs of the 32-bit system were compiled for, to the byte; on a 64-bit one the order of the fields is the same. */
#include <mova/container.h>
#include <mova/frame/host.h>

#include <gtest/gtest.h>

#include <cstddef>

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

} // namespace
