/* SPDX-License-Identifier: MIT */
#include <mova/clut/colour_table.h>

#include <tests/support/colour_table_start.h>
#include <tests/support/recording_host_test_case.h>
#include <mova/clut/internal/invariants.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <limits>
#include <set>
#include <utility>

namespace {

/* The calls of calloc, from when this is not null. */
std::vector<std::pair<std::size_t, std::size_t>> *calloc_calls = nullptr;

/* What calloc gave and was not freed, from when this is not null. */
std::set<void *> *zeroed_blocks = nullptr;

} // namespace

extern "C" void *__real_calloc(std::size_t count, std::size_t size);
extern "C" void __real_free(void *block);

extern "C" void *__wrap_calloc(std::size_t count, std::size_t size)
{
    if (calloc_calls)
        calloc_calls->emplace_back(count, size);
    void *block = __real_calloc(count, size);
    if (zeroed_blocks)
        zeroed_blocks->insert(block);
    return block;
}

extern "C" void __wrap_free(void *block)
{
    if (zeroed_blocks)
        zeroed_blocks->erase(block);
    __real_free(block);
}

namespace {

using mova::test::expect_raise;
using mova::test::log;
using mova::test::recording_host;
using mova::test::restart_colour_table;
using mova::test::standard_colours;

using colour = std::array<int16_t, 3>;

constexpr colour black = {0, 0, 0}, white = {255, 255, 255};

std::string text(int32_t index, colour value)
{
    return std::to_string(index) + " " + std::to_string(value[0]) + " " + std::to_string(value[1]) + " " +
           std::to_string(value[2]);
}

colour colour_of(int32_t index)
{
    colour found = {-1, -1, -1};
    CLUT_get(index, &found[0], &found[1], &found[2]);
    return found;
}

/* Writes down what it is told, and the colour that the table holds by then. */
void tell(int32_t index, int16_t red, int16_t green, int16_t blue)
{
    const int32_t level = std::exchange(clut_debug, 0);
    recording_host::get().write_down("told " + text(index, {red, green, blue}) + ", stored " +
                                     text(index, colour_of(index)));
    clut_debug = level;
}

void request_two()
{
    EXPECT_EQ(CLUT_new_index(), 39);
    EXPECT_EQ(CLUT_new_index(), 39);
}

class ColourTable : public mova::test::recording_host_test_case {
protected:
    void SetUp() override
    {
        recording_host_test_case::SetUp();
        restart_colour_table();
    }

    void TearDown() override
    {
        EXPECT_EQ(host.take_log(), log{});
        if (intact) {
            EXPECT_EQ(mova::clut::broken_invariant(), 0);
        }
        recording_host_test_case::TearDown();
    }

    /* Makes a table and forgets what that called. */
    void init(int32_t entries = 256, CLUT_callback callback = nullptr)
    {
        RGBLUT_init(entries, callback, 0);
        host.take_log();
        intact = true;
    }

    /* What `work` calls. */
    log calls_of(const std::function<void()> &work)
    {
        host.take_log();
        work();
        return host.take_log();
    }

    /* Requests `count` indices and returns the last. */
    int32_t request(int32_t count = 1)
    {
        int32_t last = -1;
        for (int32_t i = 0; i < count; ++i)
            last = CLUT_new_index();
        host.take_log();
        return last;
    }

    void release(int32_t index)
    {
        CLUT_release_index(index);
        host.take_log();
    }

    /* The numbers that CLUT_statistics shows: size, first free, dirty, free, hard and dynamic ones. */
    std::array<int, 6> statistics()
    {
        const log lines = calls_of(CLUT_statistics);
        std::array<int, 6> numbers = {};
        EXPECT_EQ(lines.size(), numbers.size());
        for (std::size_t i = 0; i < lines.size() && i < numbers.size(); ++i)
            numbers[i] = std::atoi(lines[i].c_str() + lines[i].find(':') + 1);
        return numbers;
    }

    int first_free_index() { return statistics()[1]; }

    /* The lines that `work` raises: the one that it throws, and all of them where the host returns. */
    void expect_raises(const std::function<void()> &work, const std::vector<int> &lines)
    {
        intact = false;
        host.set_raise_mode(recording_host::raise_mode::returns);
        log expected;
        for (int line : lines)
            expected.push_back("raise RGBLUT " + std::to_string(line) + " 4297");
        log raises;
        for (const std::string &call : calls_of(work)) {
            if (call.starts_with("raise"))
                raises.push_back(call);
        }
        EXPECT_EQ(raises, expected);
        host.set_raise_mode(recording_host::raise_mode::throws);
    }

    void expect_throws(const std::function<void()> &work, int line)
    {
        expect_raise("RGBLUT", line, 4297, work);
        host.take_log();
    }

    bool is_free(int32_t index) { return mova::clut::table.states[index] == 0; }
    bool is_hard(int32_t index) { return mova::clut::table.states[index] == 1; }
    bool is_dynamic(int32_t index) { return mova::clut::table.states[index] == 2; }

    bool intact = false;
};

/* ---- before the table is made ---- */

TEST_F(ColourTable, WordsAreZeroBeforeTheTableIsMade)
{
    EXPECT_EQ(clut_debug, 0);
    for (const auto &standard : standard_colours)
        EXPECT_EQ(*standard.word, 0);
}

TEST_F(ColourTable, StatisticsNeedNoTable)
{
    EXPECT_EQ(calls_of(CLUT_statistics),
              (log{"dprintf Clut Size : 0\n", "dprintf First Free index : 20\n", "dprintf Dirty index : 0\n",
                   "dprintf Number of free indices : 0\n", "dprintf Number of hard indices : 0\n",
                   "dprintf Number of dynamic indices : 0\n"}));
}

TEST_F(ColourTable, EveryOtherFunctionRaisesBeforeTheTableIsMade)
{
    int16_t component = -1;
    expect_throws([] { CLUT_alloc(40); }, 167);
    expect_throws([] { CLUT_new_index(); }, 186);
    expect_throws([] { CLUT_release_index(40); }, 240);
    expect_throws([] { CLUT_set(40, 1, 2, 3); }, 265);
    expect_throws([] { CLUT_set_RGB(40, 0, 0, 0); }, 265);
    expect_throws([&] { CLUT_get(40, &component, &component, &component); }, 284);
    expect_throws([] { CLUT_copy(40, 41); }, 300);
    EXPECT_EQ(component, -1);
    EXPECT_EQ(statistics(), (std::array<int, 6>{0, 20, 0, 0, 0, 0}));
    init();
    EXPECT_EQ(CLUT_new_index(), 40);
    EXPECT_EQ(host.take_log(), log{"debug_break"});
}

TEST_F(ColourTable, WhereTheHostReturnsAFunctionGoesOnUntilItWouldTouchATableThatIsNotThere)
{
    expect_raises([] { CLUT_alloc(40); }, {167});
    expect_raises([] { CLUT_alloc(0); }, {167});
    expect_raises([] { CLUT_release_index(40); }, {240});
    expect_raises([] { CLUT_set(40, 1, 2, 3); }, {265, 266});
    expect_raises([] { CLUT_set(-1, 1, 2, 3); }, {265});
    expect_raises([] { CLUT_copy(40, 41); }, {300, 302});
    expect_raises([] { CLUT_copy(-1, -2); }, {300});
    expect_raises([] { EXPECT_EQ(colour_of(0), white); }, {284});
    expect_raises([] { EXPECT_EQ(colour_of(-1), (colour{-1, -1, -1})); }, {284});
    EXPECT_EQ(first_free_index(), 20);
}

TEST_F(ColourTable, ARequestBeforeTheTableIsMadeEndsTheStaticPhaseWhereTheHostReturns)
{
    expect_raises([] { EXPECT_EQ(CLUT_new_index(), 0); }, {186, 191});
    EXPECT_EQ(first_free_index(), 20);
    expect_raises([] { CLUT_alloc(0); }, {167, 168});
    expect_raises([] { EXPECT_EQ(CLUT_new_index(), 0); }, {186});
    EXPECT_EQ(first_free_index(), 21);
    expect_raises([] { RGBLUT_init(256, nullptr, 0); }, std::vector<int>(18, 168));
    EXPECT_EQ(GE_WHITE, 21);
    EXPECT_EQ(statistics(), (std::array<int, 6>{256, 40, 0, 217, 39, 0}));
}

/* ---- RGBLUT_init ---- */

TEST_F(ColourTable, NoEntriesAndNoCallbackMake256)
{
    init(0);
    EXPECT_EQ(statistics(), (std::array<int, 6>{256, 39, 0, 218, 38, 0}));
    EXPECT_EQ(colour_of(255), black);
    EXPECT_EQ(colour_of(256), white);
}

TEST_F(ColourTable, ACallbackThatAsksForIndicesMakesNothingHardAfterTheTable)
{
    init(40, [](int32_t index, int16_t, int16_t, int16_t) {
        if (index == GE_DRKCYAN)
            request_two();
    });
    intact = false; /* the dirty index is hard now */
    EXPECT_EQ(statistics(), (std::array<int, 6>{40, 42, 39, 1, 39, 0}));
}

TEST_F(ColourTable, StandardColoursAreAssignedFrom20InTheirFixedOrder)
{
    init();
    for (const auto &standard : standard_colours) {
        EXPECT_EQ(*standard.word, standard.index);
        EXPECT_EQ(colour_of(standard.index), (colour{standard.red, standard.green, standard.blue}));
    }
}

TEST_F(ColourTable, IndicesUpToTheLastStandardColourAreHardAndOthersFree)
{
    init(60);
    for (int32_t index = 0; index < 60; ++index)
        EXPECT_EQ(is_hard(index), index < 39);
    EXPECT_EQ(first_free_index(), 39);
}

TEST_F(ColourTable, IndicesWithoutAStandardColourAreBlack)
{
    init(60);
    for (int32_t index : {0, 19, 35, 39, 59})
        EXPECT_EQ(colour_of(index), black);
}

TEST_F(ColourTable, TheCallbackIsToldOfTheStandardColoursInTheOrderOfTheirSettingButNotOfSys32)
{
    EXPECT_EQ(calls_of([] { RGBLUT_init(39, tell, 7); }),
              (log{"told 22 0 0 0, stored 22 0 0 0", "told 20 255 255 255, stored 20 0 0 0",
                   "told 21 255 255 255, stored 21 0 0 0", "told 23 255 0 0, stored 23 0 0 0",
                   "told 24 237 164 164, stored 24 0 0 0", "told 28 0 255 0, stored 28 0 0 0",
                   "told 25 0 0 255, stored 25 0 0 0", "told 29 0 255 255, stored 29 0 0 0",
                   "told 30 189 0 189, stored 30 0 0 0", "told 26 220 220 220, stored 26 0 0 0",
                   "told 27 127 127 127, stored 27 0 0 0", "told 34 100 100 100, stored 34 0 0 0",
                   "told 36 144 144 144, stored 36 0 0 0", "told 37 164 164 164, stored 37 0 0 0",
                   "told 31 0 200 0, stored 31 0 0 0", "told 33 0 0 200, stored 33 0 0 0",
                   "told 32 200 0 200, stored 32 0 0 0", "told 38 0 200 200, stored 38 0 0 0"}));
    intact = true;
}

TEST_F(ColourTable, MakingTheTableCallsNothingWithoutACallbackAndADebugLevel)
{
    EXPECT_EQ(calls_of([] { RGBLUT_init(256, nullptr, 0); }), log{});
}

TEST_F(ColourTable, StandardColoursAreHardFromTheirSettingOn)
{
    static bool all_hard;
    all_hard = true;
    init(64, [](int32_t index, int16_t, int16_t, int16_t) {
        all_hard = all_hard && mova::clut::table.states[index] == mova::clut::hard_index;
    });
    EXPECT_TRUE(all_hard);
}

TEST_F(ColourTable, TheTableIsAllocatedByCallocAWordAndAColourForEachIndexAndASpareWord)
{
    std::vector<std::pair<std::size_t, std::size_t>> calls;
    calloc_calls = &calls;
    RGBLUT_init(100, nullptr, 0);
    calloc_calls = nullptr;
    EXPECT_EQ(calls, (std::vector<std::pair<std::size_t, std::size_t>>{{101, 4}, {100, 6}}));
}

TEST_F(ColourTable, ATableOfLessThanNoIndicesTakesTheSpareWordAlone)
{
    std::vector<std::pair<std::size_t, std::size_t>> calls;
    calloc_calls = &calls;
    expect_raises([] { RGBLUT_init(-1, nullptr, 0); }, {134});
    calloc_calls = nullptr;
    EXPECT_EQ(calls, (std::vector<std::pair<std::size_t, std::size_t>>{{1, 4}, {0, 6}}));
}

TEST_F(ColourTable, TheClientWordIsKept)
{
    const mova_word word = std::numeric_limits<mova_word>::min() + 1;
    RGBLUT_init(100, tell, word);
    host.take_log();
    EXPECT_EQ(mova::clut::table.client_word, word);
}

TEST_F(ColourTable, TheFlagsOfTheRecordAreZeroAndOne)
{
    init(40);
    EXPECT_EQ(mova::modules.rgblut.initialised, 1);
    EXPECT_EQ(mova::modules.rgblut.static_phase, 1);
    request();
    EXPECT_EQ(mova::modules.rgblut.static_phase, 0);
    EXPECT_EQ(mova::modules.rgblut.full_warning, 1);
}

TEST_F(ColourTable, TheSizeBeforeTheCallIsWhatIsAnnounced)
{
    clut_debug = 1;
    const log calls = calls_of([] { RGBLUT_init(64, nullptr, 0); });
    ASSERT_EQ(calls.size(), 19u);
    EXPECT_EQ(calls.front(), "dprintf Initialising Clut Table, 0 entries\n");
    EXPECT_EQ(calls[1], "dprintf CLUT alloc 22\n");
    EXPECT_EQ(calls.back(), "dprintf CLUT alloc 38\n");
}

TEST_F(ColourTable, ATableThatIsMadeAnewAnnouncesTheSizeOfTheOldOne)
{
    init(64);
    clut_debug = 1;
    host.set_raise_mode(recording_host::raise_mode::returns);
    const log calls = calls_of([] { RGBLUT_init(100, nullptr, 0); });
    EXPECT_EQ(calls[0], "raise RGBLUT 93 4297");
    EXPECT_EQ(calls[1], "dprintf Initialising Clut Table, 64 entries\n");
}

TEST_F(ColourTable, TheStandardSizeIsNotAnnounced)
{
    clut_debug = 1;
    const log calls = calls_of([] { RGBLUT_init(0, nullptr, 0); });
    ASSERT_EQ(calls.size(), 18u);
    EXPECT_EQ(calls.front(), "dprintf CLUT alloc 22\n");
}

TEST_F(ColourTable, ADebugLevelOf2AlsoTellsOfTheColours)
{
    clut_debug = 2;
    const log calls = calls_of([] { RGBLUT_init(64, tell, 0); });
    ASSERT_EQ(calls.size(), 1u + 3u * 18u);
    EXPECT_EQ((log{calls.begin(), calls.begin() + 4}),
              (log{"dprintf Initialising Clut Table, 0 entries\n", "dprintf CLUT alloc 22\n",
                   "told 22 0 0 0, stored 22 0 0 0", "dprintf set index : 22 : 0 0 0\n"}));
    EXPECT_EQ(calls.back(), "dprintf set index : 38 : 0 200 200\n");
}

TEST_F(ColourTable, NoEntriesWithACallbackMakeATableThatIsTooSmall)
{
    clut_debug = 1;
    expect_throws([] { RGBLUT_init(0, tell, 0); }, 134);
    EXPECT_EQ(statistics(), (std::array<int, 6>{0, 39, 0, 0, 0, 0}));
    EXPECT_EQ(colour_of(0), white);
}

TEST_F(ColourTable, ATableSmallerThanTheStandardColoursRaisesAndHasNothingHard)
{
    clut_debug = 1;
    EXPECT_EQ(calls_of([&] { expect_throws([] { RGBLUT_init(38, tell, 0); }, 134); }), log{});
    EXPECT_EQ(statistics(), (std::array<int, 6>{38, 39, 0, 38, 0, 0}));
    EXPECT_EQ(GE_DRKCYAN, 38);
    EXPECT_EQ(colour_of(20), black);
    expect_throws([] { RGBLUT_init(256, nullptr, 0); }, 93);
}

TEST_F(ColourTable, ATableThatIsTooSmallIsTheSameWhereTheHostReturns)
{
    expect_raises([] { RGBLUT_init(30, tell, 0); }, {134});
    EXPECT_EQ(statistics(), (std::array<int, 6>{30, 39, 0, 30, 0, 0}));
    EXPECT_EQ(GE_WHITE, 20);
    CLUT_set(5, 1, 2, 3);
    EXPECT_EQ(host.take_log(), log{"told 5 1 2 3, stored 5 0 0 0"});
    EXPECT_TRUE(is_hard(5));
}

TEST_F(ColourTable, ANegativeSizeIsTooSmall)
{
    expect_raises([] { RGBLUT_init(-5, nullptr, 0); }, {134});
    EXPECT_EQ(statistics(), (std::array<int, 6>{-5, 39, 0, 0, 0, 0}));
    EXPECT_EQ(colour_of(0), white);
    EXPECT_EQ(colour_of(-5), white);
    expect_raises([] { EXPECT_EQ(CLUT_new_index(), 0); }, {191});
    expect_raises([] { EXPECT_EQ(CLUT_new_index(), 0); }, {});
    EXPECT_EQ(first_free_index(), 40);
}

TEST_F(ColourTable, TheSmallestTableHasNoIndexToReserve)
{
    init(39);
    EXPECT_EQ(statistics(), (std::array<int, 6>{39, 39, 0, 1, 38, 0}));
    expect_throws([] { CLUT_new_index(); }, 191);
    intact = false;
}

TEST_F(ColourTable, MakingTheTableTwiceRaisesAndChangesNothing)
{
    init();
    CLUT_set(50, 1, 2, 3);
    expect_throws([] { RGBLUT_init(64, tell, 0); }, 93);
    EXPECT_EQ(statistics()[0], 256);
    EXPECT_EQ(colour_of(50), (colour{1, 2, 3}));
    CLUT_set(51, 1, 2, 3);
}

TEST_F(ColourTable, WhereTheHostReturnsASecondTableReplacesTheFirst)
{
    init();
    CLUT_set(50, 1, 2, 3);
    expect_raises([] { RGBLUT_init(100, nullptr, 0); }, {93});
    EXPECT_EQ(GE_WHITE, 39);
    EXPECT_EQ(GE_DRKCYAN, 57);
    EXPECT_EQ(statistics(), (std::array<int, 6>{100, 58, 0, 43, 57, 0}));
    EXPECT_EQ(colour_of(50), (colour{0, 200, 0}));
    EXPECT_EQ(colour_of(20), black);
    intact = true;
}

TEST_F(ColourTable, WhereTheHostReturnsASecondTableTheFirstIsFreed)
{
    std::set<void *> blocks;
    zeroed_blocks = &blocks;
    init();
    expect_raises([] { RGBLUT_init(100, nullptr, 0); }, {93});
    zeroed_blocks = nullptr;
    EXPECT_EQ(blocks.size(), 2u);
}

TEST_F(ColourTable, ASecondTableInTheDynamicPhaseRaisesForEachStandardColour)
{
    init();
    request(2);
    std::vector<int> lines(19, 168);
    lines.front() = 93;
    expect_raises([] { RGBLUT_init(100, nullptr, 0); }, lines);
    EXPECT_EQ(GE_WHITE, 42);
    EXPECT_EQ(statistics(), (std::array<int, 6>{100, 61, 39, 40, 60, 0}));
    EXPECT_EQ(CLUT_new_index(), 61);
    host.take_log();
}

/* ---- CLUT_alloc ---- */

TEST_F(ColourTable, AllocMakesAFreeIndexHardAndLeavesTheFirstFreeIndex)
{
    init();
    EXPECT_EQ(calls_of([] { CLUT_alloc(39); }), log{});
    EXPECT_TRUE(is_hard(39));
    EXPECT_EQ(statistics(), (std::array<int, 6>{256, 39, 0, 217, 39, 0}));
    EXPECT_EQ(colour_of(39), black);
}

TEST_F(ColourTable, AllocTellsOfTheIndexUnderADebugLevel)
{
    init();
    for (int level : {1, 2, -1}) {
        clut_debug = level;
        EXPECT_EQ(calls_of([=] { CLUT_alloc(60 + level); }),
                  log{"dprintf CLUT alloc " + std::to_string(60 + level) + "\n"});
    }
}

TEST_F(ColourTable, AllocRaisesOnAnIndexThatIsNotFree)
{
    init();
    clut_debug = 1;
    expect_throws([] { CLUT_alloc(38); }, 169);
    CLUT_alloc(100);
    expect_throws([] { CLUT_alloc(100); }, 169);
}

TEST_F(ColourTable, WhereTheHostReturnsAllocGoesOn)
{
    init();
    clut_debug = 1;
    host.set_raise_mode(recording_host::raise_mode::returns);
    EXPECT_EQ(calls_of([] { CLUT_alloc(38); }), (log{"raise RGBLUT 169 4297", "dprintf CLUT alloc 38\n"}));
    clut_debug = 0;
    request();
    clut_debug = 1;
    EXPECT_EQ(calls_of([] { CLUT_alloc(100); }), (log{"raise RGBLUT 168 4297", "dprintf CLUT alloc 100\n"}));
    EXPECT_TRUE(is_hard(100));
    EXPECT_EQ(calls_of([] { CLUT_alloc(40); }),
              (log{"raise RGBLUT 168 4297", "raise RGBLUT 169 4297", "dprintf CLUT alloc 40\n"}));
    EXPECT_TRUE(is_hard(40));
}

TEST_F(ColourTable, AllocIsRefusedOnceAnIndexWasRequested)
{
    init();
    request();
    expect_throws([] { CLUT_alloc(100); }, 168);
    expect_throws([] { CLUT_alloc(38); }, 168);
    EXPECT_TRUE(is_free(100));
}

TEST_F(ColourTable, AllocLeavesWhatLiesOutsideTheTable)
{
    init(60);
    clut_debug = 2;
    for (int32_t index : {-1, 60, 61, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()})
        EXPECT_EQ(calls_of([=] { CLUT_alloc(index); }), log{});
}

/* ---- CLUT_new_index ---- */

TEST_F(ColourTable, TheFirstRequestReservesTheDirtyIndexAndReturnsTheNext)
{
    init();
    EXPECT_EQ(CLUT_new_index(), 40);
    EXPECT_EQ(host.take_log(), log{"debug_break"});
    EXPECT_EQ(statistics(), (std::array<int, 6>{256, 41, 39, 216, 38, 2}));
    EXPECT_EQ(CLUT_new_index(), 41);
    EXPECT_EQ(host.take_log(), log{"debug_break"});
    EXPECT_TRUE(is_dynamic(39) && is_dynamic(40) && is_dynamic(41) && is_free(42));
}

TEST_F(ColourTable, RequestsPassOverHardIndices)
{
    init();
    for (int32_t index : {39, 41, 42})
        CLUT_alloc(index);
    EXPECT_EQ(request(), 43);
    EXPECT_EQ(statistics()[2], 40);
    EXPECT_EQ(request(), 44);
}

TEST_F(ColourTable, ARequestKeepsTheColourOfTheIndex)
{
    init();
    request();
    CLUT_set(40, 1, 2, 3);
    release(40);
    EXPECT_EQ(request(), 40);
    EXPECT_EQ(colour_of(40), (colour{1, 2, 3}));
}

TEST_F(ColourTable, ARequestTellsOfTheIndexUnderADebugLevel)
{
    init();
    clut_debug = 1;
    EXPECT_EQ(calls_of([] { CLUT_new_index(); }), (log{"debug_break", "dprintf new index : 40\n"}));
    clut_debug = -1;
    EXPECT_EQ(calls_of([] { CLUT_new_index(); }), (log{"debug_break", "dprintf new index : 41\n"}));
}

TEST_F(ColourTable, DebugBreakComesBeforeTheRaises)
{
    for (const auto &[work, line] :
         {std::pair{+[] { CLUT_new_index(); }, 186}, std::pair{+[] { CLUT_release_index(0); }, 240}}) {
        expect_raise("RGBLUT", line, 4297, work);
        EXPECT_EQ(host.take_log().front(), "debug_break");
    }
}

TEST_F(ColourTable, ATableWithOneFreeIndexIsFullAtTheFirstRequest)
{
    init(40);
    clut_debug = 1;
    EXPECT_EQ(calls_of([] { EXPECT_EQ(CLUT_new_index(), 39); }),
              (log{"debug_break", "dprintf new index : 39\n", "message WARNING-CLUT FULL"}));
    EXPECT_EQ(statistics(), (std::array<int, 6>{40, 41, 39, 1, 38, 1}));
}

TEST_F(ColourTable, AFullTableAnswersWithTheDirtyIndexAndWarnsOnceARun)
{
    init(42);
    EXPECT_EQ(request(2), 41);
    EXPECT_EQ(calls_of([] { EXPECT_EQ(CLUT_new_index(), 39); }), (log{"debug_break", "message WARNING-CLUT FULL"}));
    EXPECT_EQ(calls_of([] { EXPECT_EQ(CLUT_new_index(), 39); }), log{"debug_break"});
    release(41);
    EXPECT_EQ(calls_of([] { EXPECT_EQ(CLUT_new_index(), 41); }), log{"debug_break"});
    EXPECT_EQ(calls_of([] { EXPECT_EQ(CLUT_new_index(), 39); }), (log{"debug_break", "message WARNING-CLUT FULL"}));
    EXPECT_EQ(calls_of([] { EXPECT_EQ(CLUT_new_index(), 39); }), log{"debug_break"});
}

TEST_F(ColourTable, ReleasingAnIndexAloneDoesNotRenewTheWarning)
{
    init(42);
    EXPECT_EQ(request(3), 39);
    release(40);
    release(39);
    EXPECT_EQ(mova::modules.rgblut.full_warning, 1);
    EXPECT_EQ(request(), 40);
    EXPECT_EQ(mova::modules.rgblut.full_warning, 0);
}

TEST_F(ColourTable, TheFirstFreeIndexClimbsPastTheSizeWithEachAnswerOfAFullTable)
{
    init(42);
    request(2);
    for (int climbed : {42, 43, 44, 45}) {
        EXPECT_EQ(first_free_index(), climbed);
        EXPECT_EQ(request(), 39);
    }
    release(40);
    EXPECT_EQ(first_free_index(), 40);
    EXPECT_EQ(request(), 40);
    EXPECT_EQ(first_free_index(), 41);
    EXPECT_EQ(request(), 39);
    EXPECT_EQ(first_free_index(), 43);
}

TEST_F(ColourTable, TheFirstFreeIndexStopsClimbingAtTheLargestNumber)
{
    constexpr int32_t largest = std::numeric_limits<int32_t>::max();
    init(42);
    request(3);
    mova::modules.rgblut.first_free_index = largest - 1;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(request(), 39);
        EXPECT_EQ(first_free_index(), largest);
    }
    release(41);
    EXPECT_EQ(request(), 41);
}

TEST_F(ColourTable, WithoutAnIndexToReserveTheStaticPhaseEndsAllTheSame)
{
    init(39);
    expect_throws([] { CLUT_new_index(); }, 191);
    expect_throws([] { CLUT_alloc(0); }, 168);
    EXPECT_EQ(statistics(), (std::array<int, 6>{39, 39, 0, 1, 38, 0}));
    intact = false;
}

TEST_F(ColourTable, WithoutAReservedIndexIndex0TakesItsPart)
{
    init(39);
    expect_raises([] { EXPECT_EQ(CLUT_new_index(), 0); }, {191});
    EXPECT_EQ(first_free_index(), 39);
    EXPECT_TRUE(is_hard(0));
    clut_debug = 1;
    EXPECT_EQ(calls_of([] { EXPECT_EQ(CLUT_new_index(), 0); }),
              (log{"debug_break", "dprintf new index : 0\n", "message WARNING-CLUT FULL"}));
    EXPECT_TRUE(is_dynamic(0));
    EXPECT_EQ(statistics(), (std::array<int, 6>{39, 40, 0, 1, 38, 0}));
}

TEST_F(ColourTable, AFullTableOfSize0AnswersWith0AndTouchesNothing)
{
    expect_raises([] { RGBLUT_init(0, tell, 0); }, {134});
    expect_raises([] { EXPECT_EQ(CLUT_new_index(), 0); }, {191});
    clut_debug = 1;
    EXPECT_EQ(calls_of([] { EXPECT_EQ(CLUT_new_index(), 0); }), log{"debug_break"});
    EXPECT_EQ(*mova::clut::table.states, 0);
}

/* Free indices at every distance from where the search begins, in tables of several sizes. */
TEST_F(ColourTable, TheSearchFindsTheLowestFreeIndexAtEveryDistance)
{
    for (int32_t size = 80; size < 100; ++size) {
        restart_colour_table();
        init(size);
        request(size - 40);
        for (int32_t index = 41; index < size; ++index) {
            release(40);
            release(index);
            EXPECT_EQ(request(), 40);
            EXPECT_EQ(request(), index);
        }
        EXPECT_EQ(request(), 39);
    }
}

/* ---- CLUT_release_index ---- */

TEST_F(ColourTable, ReleasingAnIndexBelowTheFirstFreeOneMakesItTheNextToBeHandedOut)
{
    init();
    EXPECT_EQ(request(20), 59);
    EXPECT_EQ(first_free_index(), 60);
    release(45);
    EXPECT_TRUE(is_free(45));
    EXPECT_EQ(first_free_index(), 45);
    release(50);
    EXPECT_EQ(first_free_index(), 45);
    EXPECT_EQ(request(), 45);
    EXPECT_EQ(request(), 50);
    EXPECT_EQ(request(), 60);
}

TEST_F(ColourTable, ReleasingTellsOfTheIndexUnderADebugLevel)
{
    init();
    request(3);
    EXPECT_EQ(calls_of([] { CLUT_release_index(40); }), log{"debug_break"});
    clut_debug = 1;
    EXPECT_EQ(calls_of([] { CLUT_release_index(41); }), (log{"debug_break", "dprintf free index : 41\n"}));
    clut_debug = -1;
    EXPECT_EQ(calls_of([] { CLUT_release_index(42); }), (log{"debug_break", "dprintf free index : 42\n"}));
}

TEST_F(ColourTable, ReleasingTheDirtyIndexDoesNothing)
{
    init();
    request();
    clut_debug = 2;
    EXPECT_EQ(calls_of([] { CLUT_release_index(39); }), log{"debug_break"});
    EXPECT_TRUE(is_dynamic(39));
    EXPECT_EQ(first_free_index(), 41);
}

TEST_F(ColourTable, ReleasingAHardOrAFreeIndexRaises)
{
    init();
    expect_throws([] { CLUT_release_index(0); }, 241);
    request();
    clut_debug = 1;
    for (int32_t index : {0, 38, 41, 255}) {
        expect_throws([=] { CLUT_release_index(index); }, 241);
        EXPECT_EQ(is_hard(index), index < 39);
    }
    EXPECT_EQ(first_free_index(), 41);
}

TEST_F(ColourTable, WhereTheHostReturnsReleasingFreesWhateverTheIndexWas)
{
    init();
    request();
    clut_debug = 1;
    host.set_raise_mode(recording_host::raise_mode::returns);
    EXPECT_EQ(calls_of([] { CLUT_release_index(5); }),
              (log{"debug_break", "raise RGBLUT 241 4297", "dprintf free index : 5\n"}));
    EXPECT_TRUE(is_free(5));
    EXPECT_EQ(first_free_index(), 5);
    EXPECT_EQ(calls_of([] { CLUT_release_index(200); }),
              (log{"debug_break", "raise RGBLUT 241 4297", "dprintf free index : 200\n"}));
    EXPECT_EQ(first_free_index(), 5);
}

TEST_F(ColourTable, WhereTheHostReturnsIndex0CountsAsDirtyBeforeTheFirstRequest)
{
    init();
    clut_debug = 1;
    host.set_raise_mode(recording_host::raise_mode::returns);
    EXPECT_EQ(calls_of([] { CLUT_release_index(0); }), (log{"debug_break", "raise RGBLUT 241 4297"}));
    EXPECT_TRUE(is_hard(0));
}

TEST_F(ColourTable, ReleasingLeavesWhatLiesOutsideTheTable)
{
    init(60);
    request();
    clut_debug = 2;
    for (int32_t index : {-1, 60, 61, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()})
        EXPECT_EQ(calls_of([=] { CLUT_release_index(index); }), log{"debug_break"});
    EXPECT_EQ(first_free_index(), 41);
}

/* ---- colours ---- */

TEST_F(ColourTable, SetStoresTheComponentsAsTheyAre)
{
    init();
    for (const colour &value : {colour{1, 2, 3}, colour{-32768, 32767, -1}}) {
        EXPECT_EQ(calls_of([&] { CLUT_set(50, value[0], value[1], value[2]); }), log{});
        EXPECT_EQ(colour_of(50), value);
        EXPECT_EQ(colour_of(49), black);
        EXPECT_EQ(colour_of(51), black);
    }
}

TEST_F(ColourTable, TheCallbackIsToldBeforeAColourIsStored)
{
    init(256, tell);
    EXPECT_EQ(calls_of([] { CLUT_set(50, 1, 2, 3); }), log{"told 50 1 2 3, stored 50 0 0 0"});
    EXPECT_EQ(calls_of([] { CLUT_set(50, 4, 5, 6); }), log{"told 50 4 5 6, stored 50 1 2 3"});
    EXPECT_EQ(colour_of(50), (colour{4, 5, 6}));
}

TEST_F(ColourTable, SetMakesAFreeIndexHard)
{
    init(256, tell);
    clut_debug = 1;
    EXPECT_EQ(calls_of([] { CLUT_set(50, 1, 2, 3); }),
              (log{"dprintf CLUT alloc 50\n", "told 50 1 2 3, stored 50 0 0 0"}));
    EXPECT_TRUE(is_hard(50));
    EXPECT_EQ(calls_of([] { CLUT_set(50, 4, 5, 6); }), log{"told 50 4 5 6, stored 50 1 2 3"});
    EXPECT_EQ(first_free_index(), 39);
}

TEST_F(ColourTable, SetTellsOfTheColourFromDebugLevel2On)
{
    init(256, tell);
    clut_debug = 2;
    EXPECT_EQ(calls_of([] { CLUT_set(50, 1, -2, 3); }),
              (log{"dprintf CLUT alloc 50\n", "told 50 1 -2 3, stored 50 0 0 0", "dprintf set index : 50 : 1 -2 3\n"}));
    clut_debug = 3;
    EXPECT_EQ(calls_of([] { CLUT_set(20, 0, 0, 0); }),
              (log{"told 20 0 0 0, stored 20 255 255 255", "dprintf set index : 20 : 0 0 0\n"}));
    clut_debug = -2;
    EXPECT_EQ(calls_of([] { CLUT_set(20, 1, 1, 1); }), log{"told 20 1 1 1, stored 20 0 0 0"});
}

TEST_F(ColourTable, SetOfAFreeIndexIsRefusedOnceAnIndexWasRequested)
{
    init(256, tell);
    request();
    expect_throws([] { CLUT_set(100, 1, 2, 3); }, 168);
    EXPECT_TRUE(is_free(100));
    EXPECT_EQ(colour_of(100), black);
    CLUT_set(39, 1, 2, 3);
    CLUT_set(40, 1, 2, 3);
    CLUT_set(20, 1, 2, 3);
    EXPECT_EQ(host.take_log().size(), 3u);
    EXPECT_TRUE(is_dynamic(40));
}

TEST_F(ColourTable, WhereTheHostReturnsSetMakesAFreeIndexHardInTheDynamicPhaseToo)
{
    init(256, tell);
    request();
    host.set_raise_mode(recording_host::raise_mode::returns);
    EXPECT_EQ(calls_of([] { CLUT_set(100, 1, 2, 3); }),
              (log{"raise RGBLUT 168 4297", "told 100 1 2 3, stored 100 0 0 0"}));
    EXPECT_TRUE(is_hard(100));
    EXPECT_EQ(colour_of(100), (colour{1, 2, 3}));
}

TEST_F(ColourTable, SetRaisesPastTheSizeAndLeavesTheTable)
{
    init(60, tell);
    clut_debug = 2;
    for (int32_t index : {60, 61, std::numeric_limits<int32_t>::max()})
        expect_throws([=] { CLUT_set(index, 1, 2, 3); }, 266);
    host.set_raise_mode(recording_host::raise_mode::returns);
    EXPECT_EQ(calls_of([] { CLUT_set(60, 1, 2, 3); }), log{"raise RGBLUT 266 4297"});
}

TEST_F(ColourTable, SetDoesNothingWithANegativeIndex)
{
    init(60, tell);
    clut_debug = 2;
    EXPECT_EQ(calls_of([] { CLUT_set(-1, 1, 2, 3); }), log{});
}

TEST_F(ColourTable, FractionsAreMultipliedBy255AndTruncated)
{
    init();
    CLUT_set_RGB(50, 1.0F, 0.5F, 0.0F);
    EXPECT_EQ(colour_of(50), (colour{255, 127, 0}));
    CLUT_set_RGB(50, 0.999F, 0.00392F, 0.004F);
    EXPECT_EQ(colour_of(50), (colour{254, 0, 1}));
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(ColourTable, FractionsAreNotClamped)
{
    init();
    CLUT_set_RGB(50, 2.0F, -0.999F, -1.0F);
    EXPECT_EQ(colour_of(50), (colour{510, -254, -255}));
    CLUT_set_RGB(50, 128.0F, 129.0F, 258.0F);
    EXPECT_EQ(colour_of(50), (colour{32640, -32641, 254}));
}

/* With more digits than a float has, the product is just below 257. */
TEST_F(ColourTable, FractionsAreMultipliedInSinglePrecision)
{
    constexpr float fraction = 1.00784314F;
    static_assert(static_cast<double>(fraction) * 255.0 < 257.0);
    init();
    CLUT_set_RGB(50, fraction, -fraction, 0.8F);
    EXPECT_EQ(colour_of(50), (colour{257, -257, 204}));
}

TEST_F(ColourTable, SetRgbIsASet)
{
    init(60, tell);
    clut_debug = 2;
    EXPECT_EQ(calls_of([] { CLUT_set_RGB(50, 1.0F, 0.5F, 0.25F); }),
              (log{"dprintf CLUT alloc 50\n", "told 50 255 127 63, stored 50 0 0 0",
                   "dprintf set index : 50 : 255 127 63\n"}));
    expect_throws([] { CLUT_set_RGB(60, 0, 0, 0); }, 266);
}

TEST_F(ColourTable, GetPastTheSizeIsWhiteAndTellsNothing)
{
    init(60);
    clut_debug = 2;
    for (int32_t index : {60, 61, std::numeric_limits<int32_t>::max()})
        EXPECT_EQ(calls_of([=] { EXPECT_EQ(colour_of(index), white); }), log{});
}

TEST_F(ColourTable, GetTellsOfTheColourFromDebugLevel2On)
{
    init(60);
    CLUT_set(50, 1, -2, 3);
    clut_debug = 1;
    EXPECT_EQ(calls_of([] { colour_of(50); }), log{});
    clut_debug = -2;
    EXPECT_EQ(calls_of([] { colour_of(50); }), log{});
    clut_debug = 2;
    EXPECT_EQ(calls_of([] { colour_of(50); }), log{"dprintf get index : 50 : 1 -2 3\n"});
    EXPECT_EQ(calls_of([] { colour_of(59); }), log{"dprintf get index : 59 : 0 0 0\n"});
}

TEST_F(ColourTable, GetLeavesTheVariablesForANegativeIndex)
{
    init(60);
    clut_debug = 2;
    EXPECT_EQ(colour_of(-1), (colour{-1, -1, -1}));
}

TEST_F(ColourTable, AReleasedIndexKeepsItsColourWhichCanBeRead)
{
    init();
    request();
    CLUT_set(40, 1, 2, 3);
    release(40);
    EXPECT_EQ(colour_of(40), (colour{1, 2, 3}));
}

TEST_F(ColourTable, CopyTellsTheCallbackAfterTheColourIsStored)
{
    init(60, tell);
    clut_debug = 2;
    EXPECT_EQ(calls_of([] { CLUT_copy(GE_WHITE, GE_LRED); }), log{"told 20 237 164 164, stored 20 237 164 164"});
    EXPECT_EQ(calls_of([] { CLUT_copy(GE_RED, GE_RED); }), log{"told 23 255 0 0, stored 23 255 0 0"});
}

TEST_F(ColourTable, CopyWithoutACallbackCallsNothing)
{
    init();
    request();
    clut_debug = 2;
    EXPECT_EQ(calls_of([] { CLUT_copy(40, GE_LRED); }), log{});
    clut_debug = 0;
    EXPECT_EQ(colour_of(40), (colour{237, 164, 164}));
    EXPECT_EQ(colour_of(GE_LRED), (colour{237, 164, 164}));
}

TEST_F(ColourTable, CopyRaisesPastTheSize)
{
    init(60, tell);
    for (const auto &pair : {std::pair{60, 20}, {20, 60}, {60, 60}, {59, 61}})
        expect_throws([=] { CLUT_copy(pair.first, pair.second); }, 302);
    host.set_raise_mode(recording_host::raise_mode::returns);
    EXPECT_EQ(calls_of([] { CLUT_copy(20, 60); }), log{"raise RGBLUT 302 4297"});
    EXPECT_EQ(calls_of([] { CLUT_copy(60, 20); }), log{"raise RGBLUT 302 4297"});
    EXPECT_EQ(calls_of([] { CLUT_copy(-1, 60); }), log{"raise RGBLUT 302 4297"});
    EXPECT_EQ(colour_of(20), white);
}

TEST_F(ColourTable, CopyRaisesWhereAnIndexIsFree)
{
    init(60, tell);
    for (const auto &pair : {std::pair{50, 20}, {20, 50}, {50, 50}, {50, 51}})
        expect_throws([=] { CLUT_copy(pair.first, pair.second); }, 303);
    EXPECT_EQ(colour_of(50), black);
    EXPECT_EQ(colour_of(20), white);
}

TEST_F(ColourTable, WhereTheHostReturnsCopyGoesOnAndTheFreeIndexStaysFree)
{
    init(60, tell);
    host.set_raise_mode(recording_host::raise_mode::returns);
    EXPECT_EQ(calls_of([] { CLUT_copy(50, GE_RED); }),
              (log{"raise RGBLUT 303 4297", "told 50 255 0 0, stored 50 255 0 0"}));
    EXPECT_TRUE(is_free(50));
}

TEST_F(ColourTable, CopyDoesNothingWithANegativeIndex)
{
    init(60, tell);
    EXPECT_EQ(calls_of([] { CLUT_copy(-1, 20); }), log{});
    EXPECT_EQ(calls_of([] { CLUT_copy(20, -1); }), log{});
    EXPECT_EQ(colour_of(20), white);
}

/* ---- CLUT_statistics ---- */

TEST_F(ColourTable, StatisticsShowTheirTextsWhateverTheDebugLevel)
{
    init(64);
    CLUT_alloc(60);
    request(3);
    for (int level : {0, 2}) {
        clut_debug = level;
        EXPECT_EQ(calls_of(CLUT_statistics),
                  (log{"dprintf Clut Size : 64\n", "dprintf First Free index : 43\n", "dprintf Dirty index : 39\n",
                       "dprintf Number of free indices : 21\n", "dprintf Number of hard indices : 39\n",
                       "dprintf Number of dynamic indices : 4\n"}));
    }
}

TEST_F(ColourTable, StatisticsLeaveIndex0OutAndCountTheSpareWordAsFree)
{
    init(64);
    request(24);
    EXPECT_EQ(statistics(), (std::array<int, 6>{64, 64, 39, 1, 38, 25}));
}

/* ---- the check of the invariants ---- */

TEST_F(ColourTable, TheCheckNamesTheInvariantThatIsBroken)
{
    const struct {
        void (*break_it)();
        int broken;
    } cases[] = {
        {[] { mova::clut::table.states[20] = 3; }, 1},           {[] { mova::clut::table.states[59] = -1; }, 1},
        {[] { mova::clut::table.states[60] = 1; }, 2},           {[] { mova::clut::table.states[50] = 2; }, 3},
        {[] { mova::clut::table.dirty_index = 39; }, 3},         {[] { mova::modules.rgblut.static_phase = 0; }, 3},
        {[] { mova::modules.rgblut.first_free_index = 41; }, 4}, {[] { mova::clut::table.states[5] = 0; }, 4},
    };
    for (const auto &each : cases) {
        restart_colour_table();
        init(60);
        each.break_it();
        EXPECT_EQ(mova::clut::broken_invariant(), each.broken) << &each - cases;
    }
    intact = false;
}

} // namespace
