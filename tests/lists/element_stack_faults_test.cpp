/* SPDX-License-Identifier: MIT */
#include <mova/lists/element_stack.h>
#include <mova/lists/internal/invariants.h>

#include <tests/support/fault_sweep.h>

#include <string>

namespace {

using namespace mova::test;

/* A stack of one element, and what the call made. */
struct stacks {
    ES_stack *stack = ES_create(1), *made = nullptr;

    stacks() { ES_push(stack, "A"); }

    std::string state() const { return std::to_string(ES_count_items(stack)) + (made ? " made" : ""); }

    int broken_invariant() const { return mova::broken_invariant(*stack); }

    void go_on()
    {
        ES_push(stack, "N");
        char top;
        ES_pop(stack, &top);
        ES_pop(stack, &top);
    }

    void release()
    {
        for (ES_stack **released : {&stack, &made}) {
            if (*released)
                ES_release(released);
        }
    }
};

constexpr aftermath unchanged{grade::unchanged};

const fault_row<stacks> rows[] = {
    {"ES_create", [](stacks &s) { s.made = ES_create(1); }, unchanged, unchanged},
    {"ES_push", [](stacks &s) { ES_push(s.stack, "N"); }, unchanged, unchanged},
};

TEST(ElementStackFaults, WhateverFailsTheStackIsLeftAsTheHeaderSays)
{
    sweep_faults("element stack", rows, 8);
}

} // namespace
