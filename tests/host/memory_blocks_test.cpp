/* SPDX-License-Identifier: MIT */
/* The pool of movable blocks. Its memory comes from a service of this program's own, which counts and can fail. */
#include <mova/host/errors.h>
#include <mova/host/internal/block_pool.h>
#include <mova/host/memory_blocks.h>

#include <mova/host/internal/invariants.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

size_t live_memory;
int allocations_until_failure;
std::vector<std::string> errors;

constexpr size_t unit = MB_UNIT;

} // namespace

void *MM_alloc_item(size_t size)
{
    if (allocations_until_failure && --allocations_until_failure == 0) {
        EX_raise_exception_line("memory", 1, MOVA_ALLOCATION_FAILED);
        return nullptr;
    }
    live_memory += size;
    return std::malloc(size);
}

void MM_dealloc_item(void *item, size_t size)
{
    live_memory -= size;
    std::free(item);
}

void *MM_realloc_item(void *, size_t, size_t)
{
    std::abort();
}

namespace {

void keep_error(const char *module, int32_t line, int32_t code)
{
    errors.push_back(std::string(module) + " " + std::to_string(line) + " " + std::to_string(code));
}

class MemoryBlocks : public ::testing::Test {
protected:
    void TearDown() override
    {
        mova_set_error_handler(nullptr);
        mb_release_pool(&pool);
        EXPECT_EQ(live_memory, 0u);
        EXPECT_EQ(errors, std::vector<std::string>{});
        errors.clear();
        allocations_until_failure = 0;
    }

    void make(size_t budget) { pool = mb_create_pool(budget); }

    /* A block of `units` units that is filled with a letter. */
    mb_handle allocate(size_t units, char letter = 'x')
    {
        mb_handle handle = mb_alloc(pool, units * unit);
        EXPECT_NE(handle, 0u);
        std::memset(address_of(handle), letter, units * unit);
        return handle;
    }

    void free(mb_handle handle) { mb_free(pool, &handle); }
    char *address_of(mb_handle handle) { return static_cast<char *>(mb_get(pool, handle)); }

    bool is_filled(mb_handle handle, size_t units, char letter)
    {
        return std::string(address_of(handle), units * unit) == std::string(units * unit, letter);
    }

    mb_statistics figures() { return mb_pool_statistics(pool); }

    std::vector<std::string> taken_errors() { return std::exchange(errors, {}); }

    mb_pool *pool = nullptr;
};

const std::vector<std::string> not_live_error = {"memory blocks 10 4297"};

/* ---- pools ---- */

TEST_F(MemoryBlocks, NewPoolHasNoBlocks)
{
    make(10 * unit);
    EXPECT_EQ(figures().budget, 10 * unit);
    EXPECT_EQ(figures().live_bytes, 0u);
    EXPECT_EQ(figures().live_blocks, 0u);
    EXPECT_EQ(figures().moves, 0u);
    EXPECT_EQ(figures().moved_bytes, 0u);
}

TEST_F(MemoryBlocks, TheBudgetIsRoundedUpToUnits)
{
    make(2 * unit + 1);
    EXPECT_EQ(figures().budget, 3 * unit);
    EXPECT_NE(mb_alloc(pool, 3 * unit), 0u);
}

TEST_F(MemoryBlocks, ReleasingAPoolFreesItsBlocksAndClearsTheVariable)
{
    make(10 * unit);
    allocate(3);
    allocate(0);
    mb_release_pool(&pool);
    EXPECT_EQ(pool, nullptr);
    EXPECT_EQ(live_memory, 0u);
}

TEST_F(MemoryBlocks, ReleasingNoPoolDoesNothing)
{
    mb_release_pool(&pool);
    EXPECT_EQ(pool, nullptr);
}

TEST_F(MemoryBlocks, PoolsDoNotKnowOfEachOther)
{
    make(4 * unit);
    mb_pool *other = mb_create_pool(4 * unit);
    const mb_handle handle = allocate(4, 'a'), others = mb_alloc(other, 4 * unit);
    std::memset(mb_get(other, others), 'b', 4 * unit);
    EXPECT_TRUE(is_filled(handle, 4, 'a'));
    mb_release_pool(&other);
    EXPECT_TRUE(is_filled(handle, 4, 'a'));
}

TEST_F(MemoryBlocks, APoolWhoseMemoryRunsOutIsNotMade)
{
    for (int nth = 1; nth <= 3; ++nth) {
        allocations_until_failure = nth;
        EXPECT_THROW(std::ignore = mb_create_pool(1000), mova::error) << nth;
        EXPECT_EQ(live_memory, 0u) << nth;
    }
}

TEST_F(MemoryBlocks, APoolWhoseMemoryRunsOutIsNullWhereTheHandlerReturns)
{
    mova_set_error_handler(keep_error);
    for (int nth = 1; nth <= 3; ++nth) {
        allocations_until_failure = nth;
        EXPECT_EQ(mb_create_pool(1000), nullptr) << nth;
        EXPECT_EQ(live_memory, 0u) << nth;
        EXPECT_EQ(taken_errors(), std::vector<std::string>{"memory 1 4197"}) << nth;
    }
}

TEST_F(MemoryBlocks, ABudgetThatCannotBeRoundedUpIsLeftToTheMemoryService)
{
    mova_set_error_handler(keep_error);
    allocations_until_failure = 1;
    EXPECT_EQ(mb_create_pool(SIZE_MAX), nullptr);
    EXPECT_EQ(taken_errors(), std::vector<std::string>{"memory 1 4197"});
}

/* ---- room ---- */

TEST_F(MemoryBlocks, ABlockMayBeAsLargeAsTheBudget)
{
    make(10 * unit);
    const mb_handle handle = allocate(10, 'a');
    EXPECT_TRUE(is_filled(handle, 10, 'a'));
    EXPECT_EQ(figures().live_bytes, 10 * unit);
    EXPECT_EQ(mb_alloc(pool, 1), 0u);
}

TEST_F(MemoryBlocks, ABlockLargerThanTheBudgetHasNoRoom)
{
    make(10 * unit);
    EXPECT_EQ(mb_alloc(pool, 10 * unit + 1), 0u);
    EXPECT_EQ(mb_alloc(pool, SIZE_MAX), 0u);
    EXPECT_EQ(mb_alloc(pool, SIZE_MAX - unit + 1), 0u);
    EXPECT_EQ(figures().live_blocks, 0u);
}

TEST_F(MemoryBlocks, ABlockOccupiesWholeUnits)
{
    make(3 * unit);
    mb_alloc(pool, unit + 1);
    EXPECT_EQ(figures().live_bytes, 2 * unit);
    EXPECT_EQ(mb_alloc(pool, unit + 1), 0u);
    EXPECT_NE(mb_alloc(pool, 1), 0u);
    EXPECT_EQ(figures().live_bytes, 3 * unit);
    EXPECT_EQ(figures().live_blocks, 2u);
}

TEST_F(MemoryBlocks, BlocksBeginAtMultiplesOfTheUnitAndDoNotOverlap)
{
    make(100 * unit);
    std::vector<mb_handle> handles;
    for (size_t size = 1; size < 3 * unit; size += 5)
        handles.push_back(mb_alloc(pool, size));
    const char *arena = address_of(handles.front());
    size_t end = 0, size = 1;
    for (mb_handle handle : handles) {
        EXPECT_EQ(static_cast<size_t>(address_of(handle) - arena) % unit, 0u);
        EXPECT_GE(address_of(handle), arena + end);
        end = static_cast<size_t>(address_of(handle) - arena) + size;
        size += 5;
    }
}

TEST_F(MemoryBlocks, ABlockOfSizeZeroAlwaysHasRoomAndOccupiesNone)
{
    make(unit);
    const mb_handle full = allocate(1);
    const mb_handle first = allocate(0), second = allocate(0);
    EXPECT_NE(first, second);
    EXPECT_NE(address_of(first), nullptr);
    EXPECT_EQ(figures().live_bytes, unit);
    EXPECT_EQ(figures().live_blocks, 3u);
    free(first);
    EXPECT_EQ(address_of(first), nullptr);
    EXPECT_NE(address_of(second), nullptr);
    EXPECT_NE(address_of(full), nullptr);
}

TEST_F(MemoryBlocks, APoolWithoutABudgetHoldsBlocksOfSizeZero)
{
    make(0);
    EXPECT_EQ(figures().budget, 0u);
    EXPECT_EQ(mb_alloc(pool, 1), 0u);
    EXPECT_NE(address_of(allocate(0)), nullptr);
}

TEST_F(MemoryBlocks, FreedRoomIsUsedAgain)
{
    make(4 * unit);
    for (char letter = 'a'; letter <= 'z'; ++letter) {
        const mb_handle handle = allocate(4, letter);
        EXPECT_TRUE(is_filled(handle, 4, letter));
        free(handle);
    }
    EXPECT_EQ(figures().live_bytes, 0u);
}

TEST_F(MemoryBlocks, ManyBlocksKeepTheirBytes)
{
    make(20000 * unit);
    std::vector<mb_handle> handles;
    for (int i = 0; i < 20000; ++i)
        handles.push_back(allocate(1, static_cast<char>(i % 127)));
    EXPECT_EQ(mb_alloc(pool, 1), 0u);
    for (int i = 0; i < 20000; ++i)
        ASSERT_TRUE(is_filled(handles[static_cast<size_t>(i)], 1, static_cast<char>(i % 127)));
    EXPECT_EQ(figures().live_blocks, 20000u);
    EXPECT_EQ(figures().moves, 0u);
}

/* ---- moving ---- */

TEST_F(MemoryBlocks, ScatteredRoomIsGathered)
{
    make(10 * unit);
    std::vector<mb_handle> handles;
    for (char letter = 'a'; letter < 'a' + 10; ++letter)
        handles.push_back(allocate(1, letter));
    for (size_t i = 0; i < 10; i += 2)
        free(handles[i]);
    const mb_handle large = allocate(5, 'L');
    EXPECT_TRUE(is_filled(large, 5, 'L'));
    for (size_t i = 1; i < 10; i += 2)
        EXPECT_TRUE(is_filled(handles[i], 1, static_cast<char>('a' + i)));
    EXPECT_EQ(figures().live_bytes, figures().budget);
}

/* In blocks that are large enough for a look at each to be worth it. */
TEST_F(MemoryBlocks, OnlyTheLeastThatLiesBetweenGapsIsMoved)
{
    constexpr size_t large = 100;
    make(18 * large * unit);
    const mb_handle a = allocate(4 * large, 'a'), b = allocate(2 * large, 'b'), first_gap = allocate(3 * large),
                    c = allocate(4 * large, 'c'), second_gap = allocate(2 * large), d = allocate(large, 'd');
    free(first_gap);
    free(second_gap);
    const std::vector<const void *> before = {address_of(a), address_of(b), address_of(c)};
    const mb_handle e = allocate(4 * large, 'e');
    EXPECT_EQ((std::vector<const void *>{address_of(a), address_of(b), address_of(c)}), before);
    EXPECT_EQ(address_of(d), address_of(c) + 4 * large * unit);
    EXPECT_EQ(address_of(e), address_of(d) + large * unit);
    EXPECT_TRUE(is_filled(d, large, 'd'));
    EXPECT_EQ(figures().moves, 1u);
    EXPECT_EQ(figures().moved_bytes, large * unit);
}

TEST_F(MemoryBlocks, NothingIsMovedWhileAGapFits)
{
    make(9 * unit);
    const mb_handle gap = allocate(3), keep = allocate(1), other_gap = allocate(4);
    allocate(1);
    free(gap);
    free(other_gap);
    const char *before = address_of(keep);
    allocate(4);
    EXPECT_EQ(address_of(keep), before);
    EXPECT_EQ(figures().moves, 0u);
}

/* Gaps of 64 and 65 units are of different classes, those of 1600 and 1601 of one. The one that fits was there first. */
TEST_F(MemoryBlocks, TheOneGapThatFitsIsFoundAmongManyOfAlikeSize)
{
    for (size_t size : {size_t{64}, size_t{1600}}) {
        make((20 * (size + 1) + size + 2) * unit);
        std::vector<mb_handle> gaps;
        for (int i = 0; i < 20; ++i) {
            gaps.push_back(allocate(size));
            allocate(1);
        }
        const mb_handle fits = allocate(size + 1);
        allocate(1);
        free(fits);
        for (mb_handle gap : gaps)
            free(gap);
        allocate(size + 1);
        EXPECT_EQ(figures().moves, 0u);
        mb_release_pool(&pool);
    }
}

/* Gaps of 2048 to 2051 units are of one class: two of a size, one below the other in the class's tree, and one that is not the
   first of its list. All of them leave again, one after the other. */
TEST(BlockPoolGaps, LeaveListsAndTreesFromAnyPlace)
{
    const std::vector<size_t> sizes = {2050, 2048, 2050, 2051, 2049, 2050, 2048, 2049};
    const size_t budget = (sizes.size() * 2051 + sizes.size()) * unit;
    for (size_t first_out = 0; first_out < sizes.size(); ++first_out) {
        mova::block_pool pool(mova::take_memory(budget), mova::block_pool::empty_table(), budget);
        std::vector<mb_handle> gaps, walls;
        for (size_t size : sizes) {
            gaps.push_back(pool.allocate(size * unit));
            walls.push_back(pool.allocate(unit));
        }
        pool.allocate(budget - pool.statistics().live_bytes);
        for (mb_handle gap : gaps) {
            pool.release(gap);
            ASSERT_EQ(mova::broken_invariant(pool), 0);
        }
        for (size_t i = 0; i < sizes.size(); ++i) {
            const size_t size = sizes[(first_out + i) % sizes.size()];
            ASSERT_NE(pool.allocate(size * unit), 0u);
            ASSERT_EQ(mova::broken_invariant(pool), 0) << i;
        }
        EXPECT_EQ(pool.statistics().moves, 0u) << "each found a gap of its own size";
    }
}

/* Releasing a wall joins two gaps: both leave their lists, which have others before and after. */
TEST(BlockPoolGaps, ThatHaveASuccessorInTheirListLeaveIt)
{
    mova::block_pool pool(mova::take_memory(40 * unit), mova::block_pool::empty_table(), 40 * unit);
    std::vector<mb_handle> gaps, walls;
    for (int i = 0; i < 10; ++i) {
        gaps.push_back(pool.allocate(3 * unit));
        walls.push_back(pool.allocate(unit));
    }
    for (mb_handle gap : gaps)
        pool.release(gap);
    pool.release(walls[4]);
    EXPECT_EQ(mova::broken_invariant(pool), 0);
    const char *start = static_cast<char *>(pool.get(walls[3])) + unit;
    EXPECT_EQ(pool.get(pool.allocate(7 * unit)), start);
    EXPECT_EQ(mova::broken_invariant(pool), 0);
    for (int i = 0; i < 8; ++i)
        EXPECT_NE(pool.allocate(3 * unit), 0u);
    EXPECT_EQ(pool.statistics().moves, 0u);
    EXPECT_EQ(mova::broken_invariant(pool), 0);
}

TEST(BlockPoolGaps, TheSmallestThatIsLargeEnoughIsTaken)
{
    std::mt19937 random(4197);
    constexpr size_t budget = 2000000 * unit;
    mova::block_pool pool(mova::take_memory(budget), mova::block_pool::empty_table(), budget);
    std::multiset<size_t> sizes;
    std::vector<mb_handle> gaps;
    for (int i = 0; i < 500; ++i) {
        const size_t size = (1 + random() % (1u << random() % 14)) * unit;
        gaps.push_back(pool.allocate(size));
        pool.allocate(unit);
        sizes.insert(size);
    }
    pool.allocate(budget - pool.statistics().live_bytes);
    for (mb_handle gap : gaps)
        pool.release(gap);
    for (int i = 0; i < 2000 && !sizes.empty(); ++i) {
        const size_t size = (1 + random() % 8192) * unit;
        const auto fitting = sizes.lower_bound(size);
        if (fitting == sizes.end())
            continue;
        const mb_handle block = pool.allocate(size);
        const size_t rest = *fitting - size;
        ASSERT_EQ(std::as_const(pool).block_of(block).gap, rest);
        sizes.erase(fitting);
        if (rest != 0)
            sizes.insert(rest);
        ASSERT_EQ(mova::broken_invariant(pool), 0);
    }
    EXPECT_EQ(pool.statistics().moves, 0u);
}

TEST_F(MemoryBlocks, TheGapThatFitsBestIsTaken)
{
    make(100 * unit);
    const mb_handle loose = allocate(20);
    allocate(1);
    const mb_handle tight = allocate(10);
    allocate(69);
    const char *expected = address_of(tight);
    free(loose);
    free(tight);
    EXPECT_EQ(address_of(allocate(10)), expected);
}

TEST_F(MemoryBlocks, FreeingMovesNothing)
{
    make(6 * unit);
    const mb_handle a = allocate(2), b = allocate(2), c = allocate(2);
    const char *before = address_of(c);
    free(b);
    free(a);
    EXPECT_EQ(address_of(c), before);
}

TEST_F(MemoryBlocks, AnAllocationWithoutRoomMovesNothing)
{
    make(5 * unit);
    const mb_handle a = allocate(1), b = allocate(1), c = allocate(1), d = allocate(1);
    free(a);
    free(c);
    const std::vector<const void *> before = {address_of(b), address_of(d)};
    EXPECT_EQ(mb_alloc(pool, 3 * unit + 1), 0u);
    EXPECT_EQ((std::vector<const void *>{address_of(b), address_of(d)}), before);
}

TEST_F(MemoryBlocks, ABlockLargerThanTheDistanceItMovesStaysWhole)
{
    make(100 * unit);
    const mb_handle small = allocate(1), large = allocate(98);
    for (size_t i = 0; i < 98 * unit; ++i)
        address_of(large)[i] = static_cast<char>(i % 101);
    free(small);
    allocate(2);
    for (size_t i = 0; i < 98 * unit; ++i)
        ASSERT_EQ(address_of(large)[i], static_cast<char>(i % 101));
}

/* ---- handles ---- */

TEST_F(MemoryBlocks, FreeClearsTheHandle)
{
    make(unit);
    mb_handle handle = allocate(1);
    mb_free(pool, &handle);
    EXPECT_EQ(handle, 0u);
}

TEST_F(MemoryBlocks, ADeadHandleNamesNoBlock)
{
    make(4 * unit);
    const mb_handle dead = allocate(1);
    free(dead);
    const mb_handle next = allocate(1);
    EXPECT_NE(next, dead);
    EXPECT_EQ(address_of(dead), nullptr);
    EXPECT_EQ(address_of(0), nullptr);
    EXPECT_EQ(address_of(~mb_handle{0}), nullptr);
    EXPECT_EQ(address_of(next + 1), nullptr);
}

TEST_F(MemoryBlocks, HandlesAreNotUsedAgain)
{
    make(4 * unit);
    std::set<mb_handle> seen = {0};
    for (int i = 0; i < 5000; ++i) {
        const mb_handle handle = allocate(1);
        ASSERT_TRUE(seen.insert(handle).second);
        free(handle);
    }
}

TEST_F(MemoryBlocks, FreeOfNoHandleDoesNothing)
{
    make(unit);
    mb_handle none = 0;
    mb_free(pool, &none);
    EXPECT_EQ(none, 0u);
}

TEST_F(MemoryBlocks, FreeOfADeadHandleRaises)
{
    make(2 * unit);
    mb_handle handle = allocate(1), copy = handle;
    const mb_handle live = allocate(1, 'a');
    mb_free(pool, &handle);
    try {
        mb_free(pool, &copy);
        FAIL() << "did not raise";
    } catch (const mova::error &error) {
        EXPECT_STREQ(error.module(), "memory blocks");
        EXPECT_EQ(error.line(), MB_NOT_LIVE);
        EXPECT_EQ(error.code(), 4297);
    }
    EXPECT_EQ(figures().live_blocks, 1u);
    EXPECT_TRUE(is_filled(live, 1, 'a'));
}

TEST_F(MemoryBlocks, FreeOfADeadHandleClearsItWhereTheHandlerReturns)
{
    make(2 * unit);
    mb_handle handle = allocate(1), copy = handle;
    mb_free(pool, &handle);
    mova_set_error_handler(keep_error);
    mb_free(pool, &copy);
    EXPECT_EQ(taken_errors(), not_live_error);
    EXPECT_EQ(copy, 0u);
    EXPECT_EQ(figures().live_blocks, 0u);
}

/* ---- the table of handles ---- */

/* The number of blocks that need no larger table. */
constexpr int blocks_of_first_table = 47;

TEST_F(MemoryBlocks, AnAllocationWhoseRecordHasNoMemoryLeavesThePoolAsItWas)
{
    make(100 * unit);
    for (int i = 0; i < blocks_of_first_table; ++i)
        allocate(1);
    const size_t memory = live_memory;
    allocations_until_failure = 1;
    EXPECT_THROW(mb_alloc(pool, unit), mova::error);
    mova_set_error_handler(keep_error);
    allocations_until_failure = 1;
    EXPECT_EQ(mb_alloc(pool, unit), 0u);
    EXPECT_EQ(taken_errors(), std::vector<std::string>{"memory 1 4197"});
    EXPECT_EQ(figures().live_blocks, static_cast<size_t>(blocks_of_first_table));
    EXPECT_EQ(live_memory, memory);
    allocate(1);
    EXPECT_GT(live_memory, memory);
}

TEST_F(MemoryBlocks, AnAllocationWithoutRoomAsksForNoMemory)
{
    make(blocks_of_first_table * unit);
    for (int i = 0; i < blocks_of_first_table; ++i)
        allocate(1);
    const size_t memory = live_memory;
    EXPECT_EQ(mb_alloc(pool, 1), 0u);
    EXPECT_EQ(live_memory, memory);
}

TEST(BlockPoolHandles, CountOnPastTheLastNumberWithoutThoseThatAreLive)
{
    constexpr mb_handle last = ~mb_handle{0};
    mova::block_pool pool(mova::take_memory(unit), mova::block_pool::empty_table(), unit, last - 3);
    std::set<mb_handle> handles;
    for (mb_handle expected : {last - 2, last - 1, mb_handle{1}, mb_handle{2}}) {
        EXPECT_EQ(pool.allocate(0), expected);
        handles.insert(expected);
    }
    for (mb_handle handle : handles)
        EXPECT_NE(pool.get(handle), nullptr);
    EXPECT_EQ(pool.get(last), nullptr);
    EXPECT_EQ(pool.get(0), nullptr);
    EXPECT_EQ(mova::broken_invariant(pool), 0);
}

TEST(BlockPoolHandles, SkipPlacesThatAreTaken)
{
    mova::block_pool pool(mova::take_memory(unit), mova::block_pool::empty_table(), unit);
    const mb_handle stays = pool.allocate(0);
    std::set<mb_handle> seen = {stays};
    for (int i = 0; i < 1000; ++i) {
        const mb_handle handle = pool.allocate(0);
        ASSERT_TRUE(seen.insert(handle).second);
        ASSERT_NE(pool.get(stays), nullptr);
        pool.release(handle);
    }
    EXPECT_EQ(pool.capacity(), 64u);
    EXPECT_EQ(mova::broken_invariant(pool), 0);
}

TEST(GapClasses, AreOrderedBySizeAndEachFitsWhatIsInAllBeforeIt)
{
    using namespace mova::gap_classes;
    unsigned before = class_of(unit);
    EXPECT_EQ(before, 1u);
    for (size_t units = 2; units < 5000; ++units) {
        const unsigned index = class_of(units * unit);
        ASSERT_TRUE(index == before || index == before + 1) << units;
        ASSERT_TRUE(units >= 64 || index == units);
        before = index;
    }
    EXPECT_LT(class_of(SIZE_MAX), count);
}

TEST(GapClasses, TheSetFindsTheFirstClassFromOneOn)
{
    using namespace mova::gap_classes;
    class_set set;
    EXPECT_EQ(set.first_from(0), count);
    const std::vector<unsigned> members = {1, 63, 64, 65, 200, count - 1};
    for (unsigned index : members)
        set.insert(index);
    unsigned from = 0;
    for (unsigned index : members) {
        EXPECT_EQ(set.first_from(from), index);
        EXPECT_EQ(set.first_from(index), index);
        from = index + 1;
    }
    set.erase(64);
    EXPECT_EQ(set.first_from(64), 65u);
    EXPECT_EQ(set.first_from(count), count);
}

} // namespace
