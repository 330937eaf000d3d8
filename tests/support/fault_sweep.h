/* SPDX-License-Identifier: MIT */
/* Runs calls with every service and callback that they use failing in turn, and checks what is left.

   A family describes, once, what its calls work on: a subject.

       struct lists {
           lists();                     builds the containers; nothing fails meanwhile
           std::string state() const;   everything that a caller may see of them, results that were stored included
           int broken_invariant() const;   the number of a broken invariant, or 0
           void go_on();                uses the containers further: an edit of each kind, where that is allowed
           void release();              releases everything that is left
           using makes_objects = …      where a jump out of its calls is undefined: none is tried then
       };

   and then gives a table of rows, each one call and what it leaves behind. For every row the sweep fails the first call of
   each fault_source, then the second, and so on until the row runs through untouched: once, and from then on; by an
   exception, by a jump, and in the ordinary way where the row says what that leaves. */
#ifndef MOVA_TESTS_SUPPORT_FAULT_SWEEP_H
#define MOVA_TESTS_SUPPORT_FAULT_SWEEP_H

#include "fault_plan.h"
#include "recording_host.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace mova::test {

/* What a call leaves behind when something in it failed, the best first.

       unchanged    nothing happened: every record is as it was
       usable       the invariants hold, and the container can be used on
       releasable   the container can be made empty or released, and nothing else
       lost         the container may not be touched again */
enum class grade { unchanged, usable, releasable, lost };

/* The grade, and whether the header names something that is lost besides. */
struct aftermath {
    grade left;
    bool loses_blocks = false;
};

/* What is left after a null answer, or after a raise that returned, and which sources may fail so: elsewhere it is
   undefined. A null answer is also tried with a raise after it that throws or jumps: that leaves what an exception or a jump
   leaves, or what the answer itself leaves where the row says so. */
struct answers {
    aftermath left = {grade::lost};
    std::vector<fault_source> of = {};
    bool whatever_a_raise_does = false;
};

template <class Subject>
struct fault_row {
    const char *call;
    void (*act)(Subject &subject);
    aftermath thrown; /* after an exception */
    aftermath jumped; /* after a jump */
    answers answered = {};
};

namespace fault_sweep {

enum class ending { completed, threw, jumped };

/* One failure: its source, how it fails, what a raise after a null answer does, whether it lasts, and which call. */
struct failure {
    fault_source source;
    fault_way way;
    raise_mode raises;
    bool lasting;
    int nth;
};

std::string description_of(const failure &failed);

/* Arms the plan and the host. */
void arm(const failure &failed);

/* Whether the header says what is left after such a failure. */
bool is_defined(const failure &failed, const answers &answered);

/* How a call ends in which such a failure struck. */
ending ending_of(const failure &failed);

/* The failures that a row goes through, each as the first call; without jumps, where what they leave is undefined. */
std::vector<failure> kinds_of_failure(bool with_jumps);

/* A jump may not pass over objects that have to be destroyed. A subject whose calls make some says so. */
template <class Subject>
constexpr bool may_be_jumped_out_of = !requires
{
    typename Subject::makes_objects;
};

/* Adds a test failure for each block that was lost and should not have been. Returns whether any was. */
bool check_lost_blocks(bool may_lose);

/* Runs `act` under the armed plan. No object lives here that a jump would have to destroy. */
template <class Subject>
ending run(void (*act)(Subject &), Subject &subject)
{
    if (setjmp(fault_plan::get().target()) != 0)
        return ending::jumped;
    try {
        act(subject);
    } catch (const fault &) {
        return ending::threw;
    } catch (const raised &) {
        return ending::threw;
    }
    return ending::completed;
}

/* Expects what `left` promises of the subject, and releases it. */
template <class Subject>
void check_what_is_left(Subject &subject, const std::string &before, grade left)
{
    if (left == grade::unchanged) {
        EXPECT_EQ(subject.state(), before);
    }
    if (left <= grade::usable) {
        EXPECT_EQ(subject.broken_invariant(), 0);
        subject.go_on();
        EXPECT_EQ(subject.broken_invariant(), 0) << "after it was used on";
    }
    if (left <= grade::releasable)
        subject.release();
}

/* What the row says is left. */
template <class Subject>
aftermath leaves(const fault_row<Subject> &row, const failure &failed, ending ended)
{
    if (ended == ending::completed || (failed.way == fault_way::answers && row.answered.whatever_a_raise_does))
        return row.answered.left;
    return ended == ending::threw ? row.thrown : row.jumped;
}

struct tally {
    int points = 0;
    bool lost = false;
};

/* Tries one failure. Returns whether the call got as far as it. */
template <class Subject>
bool try_failure(const fault_row<Subject> &row, const failure &failed, tally &all)
{
    SCOPED_TRACE(std::string(row.call) + ": " + description_of(failed));
    recording_host::get().reset();
    /* On the heap, so that a jump leaves it as the call left it. */
    auto subject = std::make_unique<Subject>();
    const std::string before = subject->state();
    arm(failed);
    const ending ended = run(row.act, *subject);
    fault_plan::get().disarm();
    recording_host::get().set_raise_mode(raise_mode::throws);
    if (!fault_plan::get().has_struck()) {
        check_what_is_left(*subject, before, grade::releasable);
        check_lost_blocks(false);
        return false;
    }
    const aftermath expected = leaves(row, failed, ended);
    EXPECT_EQ(ended, ending_of(failed)) << "a failure was kept back";
    check_what_is_left(*subject, before, expected.left);
    all.lost |= check_lost_blocks(expected.loses_blocks || expected.left == grade::lost);
    ++all.points;
    return true;
}

template <class Subject>
int sweep_row(const fault_row<Subject> &row)
{
    tally all;
    for (failure failed : kinds_of_failure(may_be_jumped_out_of<Subject>)) {
        if (!is_defined(failed, row.answered))
            continue;
        while (try_failure(row, failed, all) && !::testing::Test::HasFailure())
            ++failed.nth;
    }
    const bool may_lose = row.thrown.loses_blocks || row.jumped.loses_blocks || row.answered.left.loses_blocks;
    EXPECT_TRUE(all.lost || !may_lose) << row.call << ": nothing is lost, though the row says so";
    EXPECT_GT(all.points, 0) << row.call << ": nothing in it can fail";
    return all.points;
}

} // namespace fault_sweep

/* Sweeps all rows and prints how many failures were tried, which must be `at_least` so many. */
template <class Subject, std::size_t Count>
void sweep_faults(const char *family, const fault_row<Subject> (&rows)[Count], int at_least)
{
    int points = 0;
    for (const fault_row<Subject> &row : rows)
        points += fault_sweep::sweep_row(row);
    std::printf("%s: %d failures in %zu calls\n", family, points, Count);
    EXPECT_GE(points, at_least);
    recording_host::get().reset();
}

} // namespace mova::test

#endif
