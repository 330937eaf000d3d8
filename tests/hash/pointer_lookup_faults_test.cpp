/* SPDX-License-Identifier: MIT */
#include <mova/hash/pointer_lookup.h>

#include <tests/support/fault_sweep.h>
#include <tests/support/recording_host_test_case.h>
#include <mova/hash/internal/invariants.h>

#include <string>
#include <vector>

namespace {

using namespace mova::test;

/* The values that were handed over. */
std::vector<mova_word> handed_over;

void take_over(mova_word *value)
{
    callback_called();
    handed_over.push_back(*value);
}

/* Pairs 1=10 to 8=80, of which the last is in front, so that the next one doubles the table; and what the call made. */
struct lookups {
    mova_lookup *full = mova_lu_create(), *thin = mova_lu_create(), *made = nullptr;
    mova_word pushed = -1;

    lookups()
    {
        handed_over.clear();
        for (mova_word key = 1; key <= 8; ++key)
            mova_lu_add(full, key, 10 * key);
        for (mova_word key = 1; key <= 9; ++key)
            mova_lu_add(thin, key, 10 * key);
        for (mova_word key = 1; key <= 4; ++key)
            mova_lu_remove(thin, key);
    }

    std::string state() const
    {
        return text_of(full) + text_of(thin) + (made ? " made " : " ") + std::to_string(pushed);
    }

    int broken_invariant() const { return mova::broken_invariant(*full) + 10 * mova::broken_invariant(*thin); }

    void go_on()
    {
        for (mova_lookup *lookup : {full, thin}) {
            mova_lu_add(lookup, 20, 200);
            mova_lu_add(lookup, 30, 300);
            EXPECT_EQ(mova_lu_get(lookup, 20), 200);
            mova_lu_remove(lookup, 5);
            EXPECT_EQ(mova_lu_get(lookup, 5), 0);
        }
    }

    void release()
    {
        for (mova_lookup **lookup : {&full, &thin, &made})
            mova_lu_release(lookup, nullptr);
    }

    static std::string text_of(const mova_lookup *lookup)
    {
        std::string text = std::to_string(lookup->front_key) + "=" + std::to_string(lookup->front_value) + " (" +
                           std::to_string(lookup->table->capacity);
        HSH_iterator iterator = HSH_all_entries(lookup->table);
        for (mova_word key, value; HSH_next(&iterator, &key, &value);)
            text += " " + std::to_string(key) + "=" + std::to_string(value);
        return text + ")";
    }
};

constexpr aftermath unchanged{grade::unchanged}, usable{grade::usable}, loses_what_was_made{grade::unchanged, true};

const fault_row<lookups> rows[] = {
    {"mova_lu_create", [](lookups &l) { l.made = mova_lu_create(); }, unchanged, loses_what_was_made},
    {"mova_lu_add", [](lookups &l) { l.pushed = mova_lu_add(l.full, 9, 90); }, unchanged, loses_what_was_made},
    {"mova_lu_remove", [](lookups &l) { mova_lu_remove(l.thin, 6); }, unchanged, loses_what_was_made},
    {"mova_lu_release", [](lookups &l) { mova_lu_release(&l.full, take_over); }, usable, unchanged},
};

class PointerLookupFaults : public recording_host_test_case {};

TEST_F(PointerLookupFaults, WhateverFailsTheLookupsAreLeftAsTheHeaderSays)
{
    sweep_faults("pointer lookup", rows, 64);
}

/* Fails the nth call of the callback in a release of `full`, by an exception. */
void fail_release(lookups &l, int nth)
{
    fault_plan::get().arm(fault_source::callback, fault_way::throws, nth);
    EXPECT_THROW(mova_lu_release(&l.full, take_over), fault);
}

TEST_F(PointerLookupFaults, AnExceptionForTheValueInFrontLeavesEverything)
{
    lookups l;
    const std::string before = l.state();
    fail_release(l, 1);
    EXPECT_EQ(l.state(), before);
    l.release();
}

TEST_F(PointerLookupFaults, AfterAnExceptionTheValuesThatWereHandedOverAreZero)
{
    lookups l;
    fail_release(l, 4);
    EXPECT_EQ(handed_over, (std::vector<mova_word>{80, 10, 20}));
    EXPECT_EQ(lookups::text_of(l.full), "0=0 (8 1=0 2=0 3=30 4=40 5=50 6=60 7=70)");
    handed_over.clear();
    mova_lu_release(&l.full, take_over);
    EXPECT_EQ(handed_over, (std::vector<mova_word>{0, 0, 30, 40, 50, 60, 70}));
    l.release();
}

} // namespace
