/* SPDX-License-Identifier: MIT */
#include <mova/cache/swap_cache.h>

#include <tests/support/recording_host_test_case.h>
#include <mova/cache/internal/invariants.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>

namespace {

using mova::test::expect_raise;
using mova::test::log;
using mova::test::recording_host;

const std::string entry_bytes = std::to_string(sizeof(cc_entry));

/* A caller's item. Its callbacks write themselves down. */
struct item {
    char name;
    uint32_t size;
    std::string saved;
    std::function<void()> while_written_back = [] {};
};

item *item_of(void *pointer)
{
    return static_cast<item *>(pointer);
}

void write_down(const std::string &call)
{
    recording_host::get().write_down(call);
}

uint32_t size_of(void *pointer)
{
    write_down(std::string("size ") + item_of(pointer)->name);
    return item_of(pointer)->size;
}

void swap_in(void *pointer, void *block, uint32_t size)
{
    write_down(std::string("swap_in ") + item_of(pointer)->name + " " + std::to_string(size));
    std::memset(block, item_of(pointer)->name, size);
}

void write_back(void *pointer, void *block)
{
    write_down(std::string("write_back ") + item_of(pointer)->name);
    item_of(pointer)->saved.assign(static_cast<const char *>(block), item_of(pointer)->size);
    item_of(pointer)->while_written_back();
}

void release(void *pointer)
{
    write_down(std::string("release ") + item_of(pointer)->name);
}

class SwapCache : public mova::test::recording_host_test_case {
protected:
    void SetUp() override
    {
        recording_host_test_case::SetUp();
        cc_debug = 0;
        for (char name = 'A'; name <= 'Z'; ++name)
            at(name) = {name, 10, ""};
        cache = cc_create(pool());
        EXPECT_EQ(host.take_log(), log{"alloc " + std::to_string(sizeof(cc_cache)) + " = #1"});
    }

    /* The family has no function that frees the head. */
    void TearDown() override
    {
        cc_debug = 0;
        cc_make_empty(cache);
        MM_dealloc_item(cache, sizeof(cc_cache));
        recording_host_test_case::TearDown();
    }

    mb_pool *pool() { return host.pool().address(); }
    item &at(char name) { return items[static_cast<std::size_t>(name - 'A')]; }

    cc_entry *insert(char name, mb_handle handle = 0)
    {
        return cc_insert(cache, &at(name), handle, size_of, swap_in, write_back, release);
    }

    /* With a body of ten small letters in a block of its own. */
    cc_entry *insert_dirty(char name)
    {
        mb_handle handle = mb_alloc(pool(), 10);
        std::memset(mb_get(pool(), handle), name - 'A' + 'a', 10);
        return insert(name, handle);
    }

    /* Dirty, clean and out entries, by a text such as "A! B. C": "!" is dirty and "." is clean. The log is empty
       afterwards. */
    void fill(const std::string &states)
    {
        cc_make_empty(cache);
        for (std::size_t i = states.size(); i-- > 0;) {
            if (states[i] < 'A')
                continue;
            const bool is_dirty = i + 1 < states.size() && states[i + 1] == '!';
            entry(states[i]) = is_dirty ? insert_dirty(states[i]) : insert(states[i]);
            if (i + 1 < states.size() && states[i + 1] == '.')
                cc_get(cache, entry(states[i]));
        }
        EXPECT_EQ(text(), states);
        host.take_log();
    }

    cc_entry *&entry(char name) { return entries[static_cast<std::size_t>(name - 'A')]; }

    /* "A! B. C", with the invariants verified. */
    std::string text()
    {
        EXPECT_EQ(
            mova::broken_invariant(*cache, [this](mb_handle handle) { return host.pool().name_of(handle)[0] == 'b'; }),
            0);
        std::string states;
        for (const cc_entry *each = cache->first; each; each = each->next) {
            states += states.empty() ? "" : " ";
            states += item_of(each->item)->name;
            states += each->status == 0xC0 ? "!" : each->status == 0x80 ? "." : "";
        }
        return states;
    }

    static std::string hexadecimal(const void *address)
    {
        char digits[9];
        std::snprintf(digits, sizeof digits, "%8X", static_cast<unsigned>(reinterpret_cast<uintptr_t>(address)));
        return digits;
    }

    std::array<item, 26> items;
    std::array<cc_entry *, 26> entries{};
    cc_cache *cache = nullptr;
};

/* ---- creating and inserting ---- */

TEST_F(SwapCache, NewCacheHasNoEntriesAndKeepsItsPool)
{
    EXPECT_EQ(cache->first, nullptr);
    EXPECT_EQ(cache->last, nullptr);
    EXPECT_EQ(cache->pool, pool());
}

TEST_F(SwapCache, InsertWithoutAHandleStoresItsArgumentsInAnEntryThatIsOut)
{
    cc_entry *made = insert('A');
    EXPECT_EQ(host.take_log(), log{"alloc " + entry_bytes + " = #2"});
    EXPECT_EQ(made->item, &at('A'));
    EXPECT_EQ(made->handle, 0u);
    EXPECT_EQ(made->size_fn, size_of);
    EXPECT_EQ(made->swap_in_fn, swap_in);
    EXPECT_EQ(made->write_back_fn, write_back);
    EXPECT_EQ(made->release_fn, release);
    EXPECT_EQ(made->status, 0);
    EXPECT_EQ(made->prev, nullptr);
    EXPECT_EQ(made->next, nullptr);
    EXPECT_EQ(cache->first, made);
    EXPECT_EQ(cache->last, made);
}

TEST_F(SwapCache, InsertWithAHandleMakesADirtyEntryAndAsksNothingOfThePool)
{
    mb_handle handle = mb_alloc(pool(), 10);
    host.take_log();
    cc_entry *made = insert('A', handle);
    EXPECT_EQ(host.take_log(), log{"alloc " + entry_bytes + " = #2"});
    EXPECT_EQ(made->handle, handle);
    EXPECT_EQ(made->status, 0xC0);
}

TEST_F(SwapCache, InsertLinksAtTheFront)
{
    insert('C');
    insert('B');
    insert('A');
    EXPECT_EQ(text(), "A B C");
}

/* ---- fetching ---- */

TEST_F(SwapCache, GetOfABodyThatIsOutAsksForItsSizeAllocatesAndHasItFilled)
{
    fill("A");
    const void *body = cc_get(cache, entry('A'));
    EXPECT_EQ(host.take_log(), (log{"size A", "mb_alloc 10 = b1", "mb_get b1", "swap_in A 10", "mb_get b1"}));
    EXPECT_EQ(text(), "A.");
    EXPECT_EQ(body, host.pool().bytes_of(entry('A')->handle).data());
    EXPECT_EQ(std::string(static_cast<const char *>(body), 10), "AAAAAAAAAA");
}

TEST_F(SwapCache, GetOfABodyInMemoryCallsNoCallback)
{
    fill("A! B. C");
    EXPECT_EQ(cc_get(cache, entry('B')), host.pool().bytes_of(entry('B')->handle).data());
    EXPECT_EQ(host.take_log(), log{"mb_get " + host.pool().name_of(entry('B')->handle)});
    EXPECT_EQ(text(), "B. A! C");
}

TEST_F(SwapCache, GetMovesTheEntryToTheFrontFromEverywhere)
{
    fill("A! B! C!");
    cc_get(cache, entry('A'));
    EXPECT_EQ(text(), "A! B! C!");
    cc_get(cache, entry('B'));
    EXPECT_EQ(text(), "B! A! C!");
    cc_get(cache, entry('C'));
    EXPECT_EQ(text(), "C! B! A!");
    EXPECT_EQ(cache->last, entry('A'));
}

TEST_F(SwapCache, GetOfTheOnlyEntryLeavesItAlone)
{
    fill("A!");
    cc_get(cache, entry('A'));
    EXPECT_EQ(cache->first, entry('A'));
    EXPECT_EQ(cache->last, entry('A'));
    EXPECT_EQ(text(), "A!");
}

TEST_F(SwapCache, GetFetchesBeforeItMovesTheEntry)
{
    fill("A! B");
    host.pool().set_budget(10);
    at('A').while_written_back = [this] { EXPECT_EQ(text(), "A! B"); };
    cc_get(cache, entry('B'));
    EXPECT_EQ(text(), "B. A");
}

TEST_F(SwapCache, GetReturnsTheAddressAfterTheSwapIn)
{
    fill("A");
    static mb_pool *moving;
    moving = pool();
    static mb_handle other;
    entry('A')->swap_in_fn = [](void *, void *, uint32_t) { other = mb_alloc(moving, 1); };
    const void *body = cc_get(cache, entry('A'));
    EXPECT_EQ(body, host.pool().bytes_of(entry('A')->handle).data());
    mb_free(pool(), &other);
}

TEST_F(SwapCache, TheEntryIsInMemoryAndCleanWhileItIsSwappedIn)
{
    fill("A");
    static cc_entry *fetched;
    fetched = entry('A');
    entry('A')->swap_in_fn = [](void *, void *block, uint32_t) {
        EXPECT_EQ(fetched->status, 0x80);
        EXPECT_EQ(block, recording_host::get().pool().bytes_of(fetched->handle).data());
    };
    cc_get(cache, entry('A'));
}

TEST_F(SwapCache, ABodyOfSizeZeroIsFetchedLikeAnyOther)
{
    fill("A");
    at('A').size = 0;
    EXPECT_NE(cc_get(cache, entry('A')), nullptr);
    EXPECT_EQ(host.take_log(), (log{"size A", "mb_alloc 0 = b1", "mb_get b1", "swap_in A 0", "mb_get b1"}));
}

TEST_F(SwapCache, GetWithoutRoomRaisesAndLeavesTheEntryOut)
{
    fill("A! B");
    host.pool().set_budget(10);
    at('B').size = 11;
    expect_raise("cache", 334, 4197, [&] { cc_get(cache, entry('B')); });
    EXPECT_EQ(text(), "A B");
}

TEST_F(SwapCache, GetWithoutRoomUnderAHostThatReturnsYieldsNullAndLeavesTheEntryInItsPlace)
{
    fill("A! B");
    cc_debug = 1;
    host.pool().set_budget(10);
    host.set_raise_mode(recording_host::raise_mode::returns);
    at('B').size = 11;
    EXPECT_EQ(cc_get(cache, entry('B')), nullptr);
    EXPECT_EQ(host.take_log(), (log{"size B", "mb_alloc 11 = 0", "mb_get b1", "write_back A", "mb_free b1",
                                    "mb_alloc 11 = 0", "mb_alloc 11 = 0", "raise cache 334 4197"}));
    EXPECT_EQ(text(), "A B");
}

/* ---- the pool runs short ---- */

TEST_F(SwapCache, AllocWithRoomEvictsNothing)
{
    fill("A! B.");
    mb_handle handle = cc_alloc(cache, 100);
    EXPECT_EQ(host.take_log(), log{"mb_alloc 100 = b3"});
    EXPECT_EQ(host.pool().name_of(handle), "b3");
    EXPECT_EQ(text(), "A! B.");
    cc_free(cache, &handle);
}

TEST_F(SwapCache, AllocOfAFullPoolWritesTheFirstEntryBackFreesItAndStopsAtTheFirstSuccess)
{
    fill("A! B!");
    host.pool().set_budget(20);
    mb_handle handle = cc_alloc(cache, 10);
    EXPECT_EQ(host.take_log(), (log{"mb_alloc 10 = 0", "mb_get b2", "write_back A", "mb_free b2", "mb_alloc 10 = b3"}));
    EXPECT_EQ(text(), "A B!");
    EXPECT_EQ(entry('A')->handle, 0u);
    EXPECT_EQ(at('A').saved, "aaaaaaaaaa");
    cc_free(cache, &handle);
}

TEST_F(SwapCache, AllocDoesNotWriteACleanBodyBack)
{
    fill("A. B!");
    host.pool().set_budget(20);
    mb_handle handle = cc_alloc(cache, 10);
    EXPECT_EQ(host.take_log(), (log{"mb_alloc 10 = 0", "mb_free b2", "mb_alloc 10 = b3"}));
    EXPECT_EQ(text(), "A B!");
    cc_free(cache, &handle);
}

TEST_F(SwapCache, AllocTriesAgainAfterEveryEntryInMemoryOrNot)
{
    fill("A B! C D.");
    host.pool().set_budget(20);
    mb_handle handle = cc_alloc(cache, 20);
    EXPECT_EQ(host.take_log(), (log{"mb_alloc 20 = 0", "mb_alloc 20 = 0", "mb_get b2", "write_back B", "mb_free b2",
                                    "mb_alloc 20 = 0", "mb_alloc 20 = 0", "mb_free b1", "mb_alloc 20 = b3"}));
    EXPECT_EQ(text(), "A B C D");
    cc_free(cache, &handle);
}

TEST_F(SwapCache, AllocPrintsNothing)
{
    fill("A!");
    cc_debug = 1;
    host.pool().set_budget(10);
    mb_handle handle = cc_alloc(cache, 10);
    EXPECT_EQ(host.take_log(), (log{"mb_alloc 10 = 0", "mb_get b1", "write_back A", "mb_free b1", "mb_alloc 10 = b2"}));
    cc_free(cache, &handle);
}

TEST_F(SwapCache, AllocWithoutEntriesRaisesAtOnce)
{
    host.pool().set_budget(9);
    expect_raise("cache", 334, 4197, [&] { cc_alloc(cache, 10); });
    EXPECT_EQ(host.take_log(), (log{"mb_alloc 10 = 0", "raise cache 334 4197"}));
}

TEST_F(SwapCache, AllocThatEvictionCannotHelpRaisesWithEverythingEvicted)
{
    fill("A! B.");
    host.pool().set_budget(20);
    expect_raise("cache", 334, 4197, [&] { cc_alloc(cache, 21); });
    EXPECT_EQ(host.take_log(), (log{"mb_alloc 21 = 0", "mb_get b2", "write_back A", "mb_free b2", "mb_alloc 21 = 0",
                                    "mb_free b1", "mb_alloc 21 = 0", "raise cache 334 4197"}));
    EXPECT_EQ(text(), "A B");
}

TEST_F(SwapCache, AllocUnderAHostThatReturnsFromTheRaiseYieldsZero)
{
    host.set_raise_mode(recording_host::raise_mode::returns);
    host.pool().set_budget(0);
    EXPECT_EQ(cc_alloc(cache, 1), 0u);
    EXPECT_EQ(host.take_log(), (log{"mb_alloc 1 = 0", "raise cache 334 4197"}));
}

TEST_F(SwapCache, AllocReadsTheSuccessorAfterTheWriteBack)
{
    fill("A B! C!");
    host.pool().set_budget(20);
    at('B').while_written_back = [this] { cc_lazy_swap_out(cache, entry('B')); };
    mb_handle handle = cc_alloc(cache, 20);
    EXPECT_EQ(host.take_log(),
              (log{"mb_alloc 20 = 0", "mb_alloc 20 = 0", "mb_get b2", "write_back B", "mb_free b2", "mb_alloc 20 = 0",
                   "mb_alloc 20 = 0", "mb_get b1", "write_back C", "mb_free b1", "mb_alloc 20 = b3"}));
    EXPECT_EQ(text(), "B A C");
    cc_free(cache, &handle);
}

TEST_F(SwapCache, FreeHandsTheAddressOfTheHandleToThePool)
{
    mb_handle handle = cc_alloc(cache, 5);
    host.take_log();
    cc_free(cache, &handle);
    EXPECT_EQ(host.take_log(), log{"mb_free b1"});
    EXPECT_EQ(handle, 0u);
}

/* ---- swapping out ---- */

TEST_F(SwapCache, LazySwapOutMovesAnEntryInMemoryToTheFrontAndFreesNothing)
{
    fill("A B. C!");
    cc_lazy_swap_out(cache, entry('C'));
    EXPECT_EQ(text(), "C! A B.");
    cc_lazy_swap_out(cache, entry('B'));
    EXPECT_EQ(text(), "B. C! A");
    cc_lazy_swap_out(cache, entry('B'));
    EXPECT_EQ(text(), "B. C! A");
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(SwapCache, LazySwapOutDoesNotMoveAnEntryThatIsOut)
{
    fill("A! B");
    cc_lazy_swap_out(cache, entry('B'));
    EXPECT_EQ(text(), "A! B");
}

TEST_F(SwapCache, SwapOutOfADirtyBodyWritesItBackOnceAndKeepsThePlace)
{
    fill("A! B! C!");
    at('B').while_written_back = [this] { EXPECT_EQ(entry('B')->status, 0xC0); };
    cc_swap_out(cache, entry('B'));
    EXPECT_EQ(host.take_log(), (log{"mb_get b2", "write_back B", "mb_free b2"}));
    EXPECT_EQ(text(), "A! B C!");
    cc_get(cache, entry('B'));
    host.take_log();
    cc_swap_out(cache, entry('B'));
    EXPECT_EQ(host.take_log(), log{"mb_free b4"});
}

TEST_F(SwapCache, SwapOutOfABodyThatIsOutDoesNothing)
{
    fill("A B!");
    cc_swap_out(cache, entry('A'));
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(text(), "A B!");
}

TEST_F(SwapCache, AnEntryThatIsOutHasNoHandleThoughThePoolDoesNotClearIt)
{
    host.pool().set_clears_handles(false);
    fill("A!");
    cc_swap_out(cache, entry('A'));
    EXPECT_EQ(entry('A')->handle, 0u);
    EXPECT_EQ(text(), "A");
}

TEST_F(SwapCache, AWriteBackThatThrowsLeavesTheEntryDirty)
{
    fill("A!");
    at('A').while_written_back = [] { throw 5; };
    EXPECT_THROW(cc_swap_out(cache, entry('A')), int);
    EXPECT_EQ(text(), "A!");
}

TEST_F(SwapCache, FlushSwapsEveryEntryOutFrontToBack)
{
    fill("A! B C. D!");
    cc_flush(cache);
    EXPECT_EQ(host.take_log(), (log{"mb_get b3", "write_back A", "mb_free b3", "mb_free b2", "mb_get b1",
                                    "write_back D", "mb_free b1"}));
    EXPECT_EQ(text(), "A B C D");
}

TEST_F(SwapCache, FlushReadsTheSuccessorAfterTheWriteBack)
{
    fill("A B! C");
    cc_debug = 1;
    at('B').while_written_back = [this] { cc_lazy_swap_out(cache, entry('B')); };
    cc_flush(cache);
    const std::string a = "dprintf cc_swap_out " + hexadecimal(entry('A')) + "\n";
    const std::string b = "dprintf cc_swap_out " + hexadecimal(entry('B')) + "\n";
    const std::string c = "dprintf cc_swap_out " + hexadecimal(entry('C')) + "\n";
    EXPECT_EQ(host.take_log(), (log{a, b, "mb_get b1", "write_back B", "mb_free b1", a, c}));
    EXPECT_EQ(text(), "B A C");
}

TEST_F(SwapCache, AnEntryThatAWriteBackInsertsIsNotFlushed)
{
    fill("A!");
    at('A').while_written_back = [this] { entry('B') = insert_dirty('B'); };
    cc_flush(cache);
    EXPECT_EQ(text(), "B! A");
}

/* ---- removing ---- */

TEST_F(SwapCache, RemoveOfADirtyEntryFreesItsBlockWithoutAWriteBack)
{
    fill("A! B! C!");
    const std::string record = host.name_of(entry('B'));
    cc_entry *variable = entry('B');
    cc_remove(cache, &variable);
    EXPECT_EQ(variable, nullptr);
    EXPECT_EQ(host.take_log(), (log{"mb_free b2", "dealloc " + record + " " + entry_bytes}));
    EXPECT_EQ(text(), "A! C!");
}

TEST_F(SwapCache, RemoveOfACleanEntryFreesItsBlock)
{
    fill("A.");
    const std::string record = host.name_of(entry('A'));
    cc_remove(cache, &entry('A'));
    EXPECT_EQ(host.take_log(), (log{"mb_free b1", "dealloc " + record + " " + entry_bytes}));
}

TEST_F(SwapCache, RemoveOfAnEntryThatIsOutAsksNothingOfThePool)
{
    fill("A");
    const std::string record = host.name_of(entry('A'));
    cc_remove(cache, &entry('A'));
    EXPECT_EQ(host.take_log(), log{"dealloc " + record + " " + entry_bytes});
    EXPECT_EQ(cache->first, nullptr);
    EXPECT_EQ(cache->last, nullptr);
}

TEST_F(SwapCache, RemoveUnlinksAtTheFrontAndAtTheBack)
{
    fill("A B C");
    cc_remove(cache, &entry('A'));
    EXPECT_EQ(text(), "B C");
    cc_remove(cache, &entry('C'));
    EXPECT_EQ(text(), "B");
}

TEST_F(SwapCache, MakeEmptyReleasesAndRemovesEachEntryFrontToBackWithoutAWriteBack)
{
    fill("A! B C.");
    const std::string a = host.name_of(entry('A')), b = host.name_of(entry('B')), c = host.name_of(entry('C'));
    cc_make_empty(cache);
    EXPECT_EQ(host.take_log(),
              (log{"release A", "mb_free b2", "dealloc " + a + " " + entry_bytes, "release B",
                   "dealloc " + b + " " + entry_bytes, "release C", "mb_free b1", "dealloc " + c + " " + entry_bytes}));
    EXPECT_EQ(cc_check(cache), 12u);
    EXPECT_EQ(text(), "");
}

TEST_F(SwapCache, TheEntryIsStillThereWhileItIsReleased)
{
    fill("A! B");
    static cc_cache *emptied;
    static cc_entry *expected;
    emptied = cache;
    expected = entry('A');
    entry('A')->release_fn = [](void *) { EXPECT_EQ(emptied->first, expected); };
    cc_make_empty(cache);
}

TEST_F(SwapCache, AnEmptiedCacheCanBeUsedAgain)
{
    fill("A! B");
    cc_make_empty(cache);
    fill("C. D");
    EXPECT_EQ(text(), "C. D");
}

TEST_F(SwapCache, MakeEmptyOfAnEmptyCacheDoesNothing)
{
    cc_make_empty(cache);
    EXPECT_EQ(host.take_log(), log{});
}

/* ---- the check of the invariants ---- */

TEST_F(SwapCache, TheCheckNamesTheInvariantThatIsBroken)
{
    const struct {
        void (*break_it)(cc_cache &cache);
        int broken;
    } cases[] = {
        {[](cc_cache &c) { c.last->prev = nullptr; }, 1},  {[](cc_cache &c) { c.last = c.first; }, 1},
        {[](cc_cache &c) { c.first = c.first->next; }, 1}, {[](cc_cache &c) { c.last->next = c.first; }, 1},
        {[](cc_cache &c) { c.last = nullptr; }, 2},        {[](cc_cache &c) { c.first = nullptr; }, 2},
        {[](cc_cache &c) { c.first->status |= 1; }, 3},    {[](cc_cache &c) { c.last->status = 0x40; }, 3},
        {[](cc_cache &c) { c.first->status = 0; }, 4},     {[](cc_cache &c) { c.last->status = 0x80; }, 4},
    };
    for (const auto &each : cases) {
        fill("A! B C");
        const cc_cache head = *cache;
        const cc_entry first = *cache->first, last = *cache->last;
        each.break_it(*cache);
        EXPECT_EQ(mova::broken_invariant(*cache), each.broken) << &each - cases;
        *cache = head;
        *cache->first = first;
        *cache->last = last;
    }
}

/* ---- reports ---- */

TEST_F(SwapCache, CheckCountsTheRecordsAndNotTheBlocks)
{
    EXPECT_EQ(cc_check(cache), 12u);
    fill("A! B C.");
    EXPECT_EQ(cc_check(cache), 12u + 3 * 36u);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(SwapCache, PrintShowsEveryEntryFrontToBackWhateverTheFlagSays)
{
    fill("A! B");
    for (int32_t flag : {0, 1}) {
        cc_debug = flag;
        cc_print(cache);
        EXPECT_EQ(host.take_log(), (log{"dprintf cc_print\n",
                                        "dprintf entry " + hexadecimal(entry('A')) +
                                            " : item = " + hexadecimal(&at('A')) + " : handle = F0000001\n",
                                        "dprintf entry " + hexadecimal(entry('B')) +
                                            " : item = " + hexadecimal(&at('B')) + " : handle =        0\n"}));
    }
}

TEST_F(SwapCache, PrintOfAnEmptyCacheIsOneLine)
{
    cc_print(cache);
    EXPECT_EQ(host.take_log(), log{"dprintf cc_print\n"});
}

/* ---- traces ---- */

TEST_F(SwapCache, InsertIsTraced)
{
    cc_debug = 1;
    cc_entry *made = insert('A');
    EXPECT_EQ(host.take_log(), (log{"alloc " + entry_bytes + " = #2",
                                    "dprintf cc_insert " + hexadecimal(&at('A')) + " => " + hexadecimal(made) + "\n"}));
}

TEST_F(SwapCache, OnlyAGetThatFetchesIsTracedAndThatAfterTheSwapIn)
{
    fill("A");
    cc_debug = -1;
    cc_get(cache, entry('A'));
    EXPECT_EQ(host.take_log(), (log{"size A", "mb_alloc 10 = b1", "mb_get b1", "swap_in A 10",
                                    "dprintf cc_get " + hexadecimal(entry('A')) + "\n", "mb_get b1"}));
    cc_get(cache, entry('A'));
    EXPECT_EQ(host.take_log(), log{"mb_get b1"});
}

TEST_F(SwapCache, EverySwapOutIsTracedFirst)
{
    fill("A! B");
    cc_debug = 0x100;
    cc_swap_out(cache, entry('A'));
    cc_swap_out(cache, entry('B'));
    EXPECT_EQ(host.take_log(),
              (log{"dprintf cc_swap_out " + hexadecimal(entry('A')) + "\n", "mb_get b1", "write_back A", "mb_free b1",
                   "dprintf cc_swap_out " + hexadecimal(entry('B')) + "\n"}));
}

TEST_F(SwapCache, FlushOfThreeEntriesThatAreOutIsTracedThreeTimes)
{
    fill("A B C");
    cc_debug = 1;
    cc_flush(cache);
    EXPECT_EQ(host.take_log(), (log{"dprintf cc_swap_out " + hexadecimal(entry('A')) + "\n",
                                    "dprintf cc_swap_out " + hexadecimal(entry('B')) + "\n",
                                    "dprintf cc_swap_out " + hexadecimal(entry('C')) + "\n"}));
}

TEST_F(SwapCache, RemoveIsTracedLast)
{
    fill("A!");
    cc_debug = 1;
    const std::string record = host.name_of(entry('A')), address = hexadecimal(entry('A'));
    cc_remove(cache, &entry('A'));
    EXPECT_EQ(host.take_log(),
              (log{"mb_free b1", "dealloc " + record + " " + entry_bytes, "dprintf cc_remove : " + address + "\n"}));
}

TEST_F(SwapCache, TheOtherFunctionsPrintNothing)
{
    fill("A! B");
    cc_debug = 1;
    cc_lazy_swap_out(cache, entry('A'));
    cc_check(cache);
    mb_handle handle = cc_alloc(cache, 1);
    cc_free(cache, &handle);
    EXPECT_EQ(host.take_log(), (log{"mb_alloc 1 = b2", "mb_free b2"}));
}

} // namespace
