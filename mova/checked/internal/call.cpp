/* SPDX-License-Identifier: MIT */
#include "call.h"

#include "chains.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <utility>

#include <unwind.h>

namespace mova::checked {

namespace {

/* Further apart than this, two calls of a thread stand on different stacks, and nothing is known of their order. */
constexpr uintptr_t one_stack = uintptr_t{1} << 28;

/* Whether a call lies deeper on the stack than one that was made after it: it was left by a jump. */
bool was_left(const running_call &outer, const void *depth)
{
    const auto inner = reinterpret_cast<uintptr_t>(depth), before = reinterpret_cast<uintptr_t>(outer.depth);
    return before <= inner && inner - before < one_stack;
}

/* Whether the stack still leads back to where a call was made from. It may look as if it did not end, while a jump has left it
   and its part of the stack is others' now. */
bool is_on_the_stack(const running_call &outer)
{
    struct search {
        uintptr_t returns_to, depth;
        bool found;
    };
    constexpr uintptr_t longest_frame = 8192;
    search sought = {reinterpret_cast<uintptr_t>(outer.where), reinterpret_cast<uintptr_t>(outer.depth), false};
    _Unwind_Backtrace(
        [](_Unwind_Context *frame, void *argument) {
            auto *const in = static_cast<search *>(argument);
            const uintptr_t depth = _Unwind_GetCFA(frame);
            in->found |=
                _Unwind_GetIP(frame) == in->returns_to && depth > in->depth && depth - in->depth < longest_frame;
            return in->found ? _URC_END_OF_STACK : _URC_NO_REASON;
        },
        &sought);
    return sought.found;
}

/* An exception or a jump, or a raise, ended the call: its containers may be what the header says is left then. */
void leave(running_call &left)
{
    for (owner_number &number : left.used) {
        if (number != 0)
            owner_at(number).excused = true;
        number = 0;
    }
    if (left.expected != 0)
        drop_if_unused(std::exchange(left.expected, 0));
}

/* A container's invariants are asked where all of it is gone through anyway, at its release above all, and after so many
   calls that it costs them next to nothing. */
bool is_time_for_invariants(const owner &of, use how, uint32_t now_and_then)
{
    return asked_for().full || how >= use::empty ||
           (of.calls % now_and_then == 0 &&
            of.calls >= 16 * (of.of->size ? of.of->size(of.container) : int64_t{of.entries}));
}

} // namespace

constinit thread_local running_calls running = {};

void call::make_room()
{
    while (running.count != 0 && was_left(*innermost_call(), this)) {
        const registry_lock lock;
        leave(running.calls[--running.count]);
    }
    is_beyond_ = running.count == running_calls::most;
    if (is_beyond_)
        outermost_ = running.calls[--running.count];
}

void call::leave_running()
{
    const registry_lock lock;
    leave(*own_);
}

const running_call *call::next_outer(const running_call *of)
{
    return of != running.calls ? of - 1 : nullptr;
}

bool call::still_runs(const running_call &outer)
{
    if (is_on_the_stack(outer))
        return true;
    leave(running.calls[&outer - running.calls]);
    return false;
}

void note_raise(int32_t line)
{
    running_call *const raising = innermost_call();
    if (!raising)
        return;
    raising->has_raised = true;
    if (!raising->meaning || raising->meaning->line != line)
        return;
    finding found(raising->function, raising->where);
    {
        const registry_lock lock;
        found.say("%s", raising->meaning->what);
        found.show_container(raising->used[0]);
    }
    report(found);
}

/* ---- threads ---- */

namespace {

uint32_t number_of_thread()
{
    static std::atomic<uint32_t> threads;
    static thread_local const uint32_t number = ++threads;
    return number;
}

/* Of the family whose containers are for one thread together. */
owner last_of_family;

} // namespace

void call::enter()
{
    const uint32_t thread = number_of_thread() * 2 + own_->edits;
    for (int nth = 0; nth < running_call::most_used; ++nth) {
        entered_[nth] = nullptr;
        if (used(nth) == 0)
            continue;
        owner &into = owner_at(used(nth));
        entered_[nth] = into.container;
        into.last_thread = thread;
        into.last_entered = where();
        if (into.of->is_for_one_thread) {
            last_of_family.last_thread = thread;
            last_of_family.last_entered = where();
        }
        has_entered_ = true;
    }
}

void call::judge_threads()
{
    const registry_lock lock;
    const uint32_t thread = number_of_thread() * 2 + own_->edits;
    const auto meets = [thread](const owner &in) {
        return in.last_thread / 2 != thread / 2 && ((in.last_thread | thread) & 1) != 0;
    };
    for (int nth = 0; nth < running_call::most_used && !is_wrong() && !own_->releases; ++nth) {
        if (used(nth) == 0 || !entered_[nth])
            continue;
        const owner &in = owner_at(used(nth));
        if (!in.live || in.container != entered_[nth])
            continue;
        const bool met = meets(in);
        if (!met && !(in.of->is_for_one_thread && meets(last_of_family)))
            continue;
        wrong().say("another thread used %s %s meanwhile", met ? "the" : "a", in.of->noun);
        wrong().add(met ? in.last_entered : last_of_family.last_entered, "the other   in              ");
        wrong().show_container(used(nth));
    }
}

owner_number call::expect_container(const family &of)
{
    own_->expected = own_->blocks_of = new_owner(of, own_->lasting);
    return own_->expected;
}

/* The head is a block that the call allocated. A null one was not made. */
void call::container_is(const family &of, const void *made)
{
    owner_number number = std::exchange(own_->expected, 0);
    if (!made) {
        if (number != 0)
            drop_if_unused(number);
        return;
    }
    if (number == 0)
        number = new_owner(of, own_->lasting);
    owner_at(number).container = made;
    entry *const head = find(made);
    if (head && head->live && head->owner == number)
        head->what = kind::head;
    else
        book(made, kind::head, number, own_->lasting);
}

void call::judge_invariants(owner &of, owner_number number, use how)
{
    ++of.calls;
    if (of.excused || !of.of->broken_invariant || !is_time_for_invariants(of, how, now_and_then))
        return;
    of.calls = 0;
    if (const int broken = of.of->broken_invariant(of.container)) {
        wrong().say("the %s breaks its invariant %d", of.of->noun, broken);
        wrong().show_container(number);
    }
}

owner_number call::look_at_container(const family &of, const void *container, use how, int nth, bool may_be_hand_made)
{
    if (!container) {
        wrong().say("the %s is null", of.noun);
        return 0;
    }
    const entry *const known = find(container);
    if (!known) {
        if (may_be_hand_made)
            return 0;
        wrong().say("the %s was never created", of.noun);
        wrong().add(nullptr, "%-10s %p", of.noun, container);
        return 0;
    }
    if (known->what != kind::head) {
        if (may_be_hand_made || known->what == kind::item || known->owner == 0)
            return 0;
        wrong().say("the %s was never created", of.noun);
        if (known->owner != 0)
            wrong().show_member(of.noun, container, *known);
        return 0;
    }
    const owner_number number = known->owner;
    owner &judged = owner_at(number);
    if (!known->live) {
        wrong().say("the %s was released", of.noun);
        wrong().show_container(number);
        return 0;
    }
    if (!same_records(*judged.of, of)) {
        if (may_be_hand_made)
            return 0;
        wrong().say("the %s is of another family", of.noun);
        wrong().add(judged.made, "%s %p   made in      ", judged.of->full_noun, container);
        return 0;
    }
    const auto uses_it = [number](const running_call &outer) {
        return std::find(outer.used, std::end(outer.used), number) != std::end(outer.used);
    };
    if (const running_call *const outer = how >= use::edit ? outer_call(uses_it) : nullptr) {
        wrong().say("the %s is calling back in %s", of.noun, outer->function);
        wrong().show_container(number);
        return 0;
    }
    uses(number, nth);
    if (how == use::nested && next_outer(own_))
        return number;
    if (how != use::read || asked_for().full)
        judge_invariants(judged, number, how);
    return is_wrong() ? 0 : number;
}

/* A node that the program linked: the list is asked, once for many of them. */
void call::look_at_unknown(const family &of, owner_number in, const void *position, const char *role)
{
    if (owner_at(in).excused || claim_beside_a_member(in, position))
        return;
    claim_all_members(in, kind::block);
    if (find(position))
        return;
    wrong().say("the %s is not of the %s", role, of.noun);
    wrong().show_container(in);
}

void call::look_at_position(const family &of, owner_number in, const void *position, const char *role)
{
    if (!position) {
        wrong().say("the %s is null", role);
        return;
    }
    const auto is_right = [&](const entry *known) {
        if (!known || known->owner == 0)
            return true;
        const owner_number number = resolved(known->owner);
        return known->live && known->what != kind::head && known->what != kind::iterator &&
               same_records(*owner_at(number).of, of) && (in == 0 || number == in);
    };
    if (!find(position) && in != 0 && of.is_chain) {
        look_at_unknown(of, in, position, role);
        return;
    }
    if (is_right(find(position)))
        return;
    if (in != 0 && of.is_chain)
        claim_members(in);
    const entry *const known = find(position);
    if (is_right(known))
        return;
    const owner_number number = resolved(known->owner);
    const owner &its = owner_at(number);
    if (in == 0 && !sees_every_block())
        return;
    if (known->what == kind::head)
        wrong().say("the %s is a %s", role, its.of->noun);
    else if (known->what == kind::iterator)
        wrong().say("the %s is an iterator", role);
    else if (!known->live)
        wrong().say("the %s was removed", role);
    else if (!same_records(*its.of, of))
        wrong().say("the %s is of another family", role);
    else
        wrong().say("the %s is of another %s", role, of.noun);
    wrong().show_member(role, position, *known);
    if (known->live && number != in && in != 0)
        wrong().show_container(in);
}

void call::look_at_iterator(const family &of, const void *next, const void *end,
                            bool (*stops_anyway)(const void *container))
{
    const entry *const rests_on = next ? find(next) : nullptr;
    if (!rests_on || rests_on->owner == 0)
        return;
    const owner_number number = resolved(rests_on->owner);
    if (!rests_on->live || !same_records(*owner_at(number).of, of)) {
        if (!sees_every_block())
            return;
        wrong().say(rests_on->live ? "the iterator is of another family" : "the iterator rests on a removed position");
        wrong().show_member("position", next, *rests_on);
        return;
    }
    uses(number, 0);
    const auto is_right = [number](const entry *known) {
        return !known || known->owner == 0 || (known->live && resolved(known->owner) == number);
    };
    if (!end || end == next || is_right(find(end)) || (stops_anyway && stops_anyway(owner_at(number).container)))
        return;
    claim_members(number);
    if (const entry *const ends_at = find(end); !is_right(ends_at)) {
        if (ends_at->live)
            wrong().say("the iterator's end is of another %s", of.noun);
        else
            wrong().say("the iterator's end was removed");
        wrong().show_member("end", end, *ends_at);
    }
}

} // namespace mova::checked
