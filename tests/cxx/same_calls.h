/* SPDX-License-Identifier: MIT */
/* Holds the typed layer to the calls that the C functions make. */
#ifndef MOVA_TESTS_CXX_SAME_CALLS_H
#define MOVA_TESTS_CXX_SAME_CALLS_H

#include <tests/support/recording_host_test_case.h>

namespace mova::test {

/* The host calls of `work`, on a fresh host. */
template <class Work>
log calls_of(Work work)
{
    recording_host::get().reset();
    work();
    return recording_host::get().take_log();
}

template <class C, class Typed>
void expect_same_calls(C c, Typed typed)
{
    EXPECT_EQ(calls_of(typed), calls_of(c));
}

/* The items of a range. */
template <class Range>
auto items_of(Range &&range)
{
    std::vector<std::remove_cvref_t<decltype(*range.begin())>> items;
    for (auto &&each : range)
        items.push_back(each);
    return items;
}

} // namespace mova::test

#endif
