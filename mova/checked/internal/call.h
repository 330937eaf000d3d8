/* SPDX-License-Identifier: MIT */
/* The checked functions: how a call of the program is checked, made and noted.

   The ordinary library's objects are linked into the checked library as they are, but for the names of their public
   functions: GL_remove_item is called mova_plain_GL_remove_item there, in its callers too. Under the public names stand
   functions that a script writes (cmake/checked_functions.cmake), all alike:

       void GL_remove_item(GL_list *list, GL_node *position)
       {
           call made("GL_remove_item", return address);
           make<row of GL_remove_item>(made, mova_plain_GL_remove_item, list, position);
       }

   So what the program calls is checked, and what the containers call of each other is not. What they ask of their host goes
   through host_services.cpp, which passes it on unchanged and notes which blocks came and went.

   A row says what the function's arguments are, by roles, in the order in which they are judged:

       constexpr row GL_remove_item{container<0, generic_list>{use::edit}, position<1, 0>{}};

   A role has up to two functions. before(call, arguments) judges, under the registry's lock, and says what is wrong
   by call.wrong(…); once something is wrong the later ones are not asked. after(call, arguments, result) notes what the
   call has changed.

   To check a family:
     1. Give its row in cmake/families.cmake the word "checked".
     2. Write mova/checked/<name>.h: the family's traits, and in namespace mova::checked::rows a row for each function
        that its header declares. The compiler names those that lack one.
     3. Take roles of roles.h; one that only this family needs stands in its own file.
     4. Add a line of misuse cells to tests/checked (its own first comment says how), and tick them in docs/checked.md.

   What is judged must be certain. Records are plain, and a program may have made one by hand, moved it, or linked
   nodes of its own: an address that the registry does not know is not spoken of, but where the header lets nobody but the
   library make it. */
#ifndef MOVA_CHECKED_INTERNAL_CALL_H
#define MOVA_CHECKED_INTERNAL_CALL_H

#include "report.h"
#include "symbols.h"

#include <tuple>
#include <type_traits>

namespace mova::checked {

/* What a function does with a container that it is given. */
enum class use {
    read,
    nested, /* an edit that the container's own callbacks may make too */
    edit,
    empty,   /* an edit that goes through all of it */
    release, /* the container is gone afterwards */
};

/* A misuse that the library itself finds: what a raise of this line says of the program. */
struct raise_meaning {
    int32_t line;
    const char *what;
};

/* What is noted of a call as long as it runs. */
struct running_call {
    static constexpr int most_used = 3;

    const void *depth; /* on the stack */
    const char *function;
    place where;
    place lasting;                /* the same, to be kept of what it makes and releases */
    owner_number used[most_used]; /* containers */
    owner_number blocks_of;       /* the container that the blocks are of that it allocates */
    owner_number expected;        /* the container that it makes */
    bool has_raised;
    bool edits, releases;         /* one of the containers */
    const raise_meaning *meaning; /* or null */
    const void *position;         /* that it is about, where it matters to calls inside of it; or null */
};

/* The calls of a thread that are running, the innermost last. They are few: a program that loads the library late has little room
   for what every thread has from the start. */
struct running_calls {
    static constexpr unsigned most = 12;

    running_call calls[most];
    unsigned count;
};

/* Present in every thread from the start: the library is loaded with the program. */
extern constinit __attribute__((tls_model("initial-exec"))) thread_local running_calls running;

/* The innermost call of this thread, or null. */
inline running_call *innermost_call()
{
    return running.count != 0 ? &running.calls[running.count - 1] : nullptr;
}

/* Whether every block that is allocated and freed goes past the checks, the program's own calls included: with the checked
   host. With another, a block may have come and gone without them, and where there is no container to be asked about a
   position nothing is said. */
bool sees_every_block();

/* Whether pools of memory blocks are the checked host's, which can be asked about a block. */
bool has_checked_pools();

/* The innermost call raises this line: reports what that means. */
void note_raise(int32_t line);

/* A call that the program makes, as long as it runs. Callbacks may make others meanwhile: a thread's calls are in an array,
   not on its stack, where those that a jump has left could not be read any more. */
class call {
public:
    call(const char *function, place where) : function_(function), where_(where)
    {
        if (running.count != 0) [[unlikely]]
            make_room();
        index_ = running.count++;
        own_ = &running.calls[index_];
        *own_ = {this, function, where, where, {}, 0, 0, false, false, false, nullptr, nullptr};
    }

    /* A call on another stack may have taken this one for left. */
    ~call()
    {
        if (own_->depth == this) [[likely]]
            end();
    }

    call(const call &) = delete;
    call &operator=(const call &) = delete;

    /* ---- what roles ask before the call; all of it under the lock ---- */

    /* Whether something is wrong already. */
    bool is_wrong() const { return is_wrong_; }

    /* The finding, to be told what is wrong. */
    finding &wrong()
    {
        if (!is_wrong_)
            new (&found) finding(function_, where_);
        is_wrong_ = true;
        return found;
    }

    /* Judges a container: null, never made, released, of another family, edited while it is calling back. Notes it as the
       nth that this call uses. Returns its number, or 0 where it is wrong or unknown. A container that may be made by hand
       may be unknown. */
    __attribute__((always_inline)) owner_number judge_container(const family &of, const void *container, use how,
                                                                int nth = 0, bool may_be_hand_made = false)
    {
        own_->edits |= how != use::read;
        own_->releases |= how == use::release;
        const entry *const known = find_again(container);
        if (!known || !is_plainly_right(of, *known, how))
            return look_at_container(of, container, how, nth, may_be_hand_made);
        uses(known->owner, nth);
        return known->owner;
    }

    /* The nth container that the call uses, or 0. */
    owner_number used(int nth) const { return own_->used[nth]; }
    void uses(owner_number number, int nth) { own_->used[nth] = number; }

    /* As judge_container, of an owner that the registry does not know by an address: nothing is judged but its threads. */
    void enters(owner_number number, use how, int nth = 0)
    {
        own_->edits |= how != use::read;
        uses(number, nth);
    }

    /* Judges a position of the container `in`, or of any of that family where it is 0. A null one is wrong. */
    __attribute__((always_inline)) void judge_position(const family &of, owner_number in, const void *position,
                                                       const char *role = "position")
    {
        const entry *const known = find(position);
        if (!known || !known->live || known->owner != in || (known->what != kind::block && known->what != kind::item))
            look_at_position(of, in, position, role);
    }

    /* Judges an iterator that will deliver `next`, up to and including `end`. Its container is the first that the call uses:
       its test must not edit it. Where it stops anyway its end may be elsewhere. */
    __attribute__((always_inline)) void judge_iterator(const family &of, const void *next, const void *end,
                                                       bool (*stops_anyway)(const void *container) = nullptr)
    {
        const entry *const rests_on = find(next), *const ends_at = rests_on ? find_again(end) : nullptr;
        if (!ends_at || !rests_on->live || !ends_at->live || rests_on->owner != ends_at->owner ||
            rests_on->owner == 0 || owner_at(rests_on->owner).of != &of || owner_at(rests_on->owner).joined_to != 0)
            return look_at_iterator(of, next, end, stops_anyway);
        uses(rests_on->owner, 0);
    }

    /* What a role's before() tells its after(). */
    void remember(const void *address) { remembered_ = address; }
    const void *remembered() const { return remembered_; }

    /* Of which position the call is, for outer_call. */
    void is_about(const void *position) { own_->position = position; }

    /* What a raise of a line would mean. */
    void raise_means(const raise_meaning *meaning) { own_->meaning = meaning; }

    /* The innermost of the calls that wait for this one to return, of which `is_sought(call)` holds; or null. */
    template <class IsSought>
    const running_call *outer_call(IsSought is_sought) const
    {
        const running_call *outer = next_outer(own_);
        while (outer && !(is_sought(*outer) && still_runs(*outer)))
            outer = next_outer(outer);
        return outer;
    }

    /* ---- what the call makes ---- */

    /* Blocks that are allocated from now on until the call ends are of this container. */
    void blocks_are_of(owner_number number) { own_->blocks_of = number; }

    /* As above, of a new container, which its role will name after the call. */
    owner_number expect_container(const family &of);
    void container_is(const family &of, const void *made);

    const char *function() const { return function_; }
    place where() const { return where_; }

    /* ---- make() ---- */

    /* The place of the call is kept. Without the lock. */
    void place_lasts() { own_->lasting = lasting_place(where_); }

    void completed() { completed_ = true; }

    /* Where there are threads: this one enters the containers that the call uses, and sees at the end whether another has
       entered one of them meanwhile, and one of the two to edit. So nothing is said of a call that was left by a jump. */
    void enter();
    void judge_threads();
    bool has_entered() const { return has_entered_; }

    /* Reports what is wrong and was not reported yet. Without the lock. */
    void report_misuse()
    {
        if (is_wrong_ && !is_reported_) [[unlikely]] {
            is_reported_ = true;
            report(found);
        }
    }

private:
    static constexpr uint32_t now_and_then = 256;
    static constexpr uint32_t live_head = state_word(kind::head, true, true, 0);

    /* Whether all is as it is nearly always; counts an edit then. */
    bool is_plainly_right(const family &of, const entry &known, use how)
    {
        if ((state_word(known) & containers_bytes) != live_head || chosen_options.full)
            return false;
        owner &judged = owner_at(known.owner);
        if (judged.of != &of)
            return false;
        if (how == use::read)
            return true;
        if (how != use::edit || own_ != running.calls || (judged.calls + 1) % now_and_then == 0)
            return false;
        ++judged.calls;
        return true;
    }

    void make_room();
    void leave_running();

    void end()
    {
        if (!completed_ || own_->has_raised) [[unlikely]]
            leave_running();
        running.count = index_;
        if (is_beyond_) [[unlikely]]
            running.calls[running.count++] = outermost_;
    }

    owner_number look_at_container(const family &of, const void *container, use how, int nth, bool may_be_hand_made);
    void look_at_unknown(const family &of, owner_number in, const void *position, const char *role);
    void look_at_position(const family &of, owner_number in, const void *position, const char *role);
    void look_at_iterator(const family &of, const void *next, const void *end,
                          bool (*stops_anyway)(const void *container));
    void judge_invariants(owner &of, owner_number number, use how);
    static const running_call *next_outer(const running_call *of);
    static bool still_runs(const running_call &outer);

    const char *function_;
    place where_;
    running_call *own_;
    unsigned index_;
    bool completed_ = false, is_wrong_ = false, is_reported_ = false, has_entered_ = false;
    bool is_beyond_ = false; /* there were more calls than fit: this one has the place of `outermost_` */
    const void *remembered_ = nullptr;
    const void *entered_[running_call::most_used]; /* where it has entered */
    running_call outermost_;
    union {
        finding found; /* where something is wrong */
    };
};

/* Whether a role has something to note after the call. */
template <class Role, class... Of>
constexpr bool concludes = requires(const Role &role, Of &...of)
{
    role.after(of...);
};

template <class Role, class... Of>
void conclude_role(const Role &role, Of &...of)
{
    if constexpr (concludes<Role, Of...>)
        role.after(of...);
}

/* A role may also have a function that asks the program's own callbacks, ask(call, arguments, result), for MOVA_CHECK=order.
   It is asked without the lock. */
template <class Role, class... Of>
constexpr bool asks = requires(const Role &role, Of &...of)
{
    role.ask(of...);
};

template <class Role, class... Of>
void ask_role(const Role &role, Of &...of)
{
    if constexpr (asks<Role, Of...>)
        role.ask(of...);
}

/* A row: the roles, in the order in which they are asked. */
template <class... Roles>
struct row {
    constexpr explicit row(Roles... roles) : all(roles...) {}

    template <class... Of>
    static constexpr bool concludes = (checked::concludes<Roles, Of...> || ...);

    template <class... Of>
    static constexpr bool asks = (checked::asks<Roles, Of...> || ...);

    constexpr bool makes_or_releases() const
    {
        return std::apply([](const auto &...role) { return (role.makes_or_releases() || ...); }, all);
    }

    std::tuple<Roles...> all;
};

/* Makes a call as its row says. */
template <const auto &Row, class Result, class... Declared, class... Arguments>
__attribute__((always_inline)) inline Result make(call &made, Result (*plain)(Declared...), Arguments &...given)
{
    using row_of_it = std::remove_cvref_t<decltype(Row)>;
    const std::tuple<Arguments &...> arguments(given...);
    if constexpr (Row.makes_or_releases())
        made.place_lasts();
    {
        const registry_lock lock;
        ++calls_checked;
        std::apply([&](const auto &...role) { ((made.is_wrong() || (role.before(made, arguments), true)) && ...); },
                   Row.all);
        if (lock.has_threads() && !made.is_wrong())
            made.enter();
    }
    made.report_misuse();
    const auto conclude = [&](auto &...result) {
        made.completed();
        if constexpr (row_of_it::template concludes<call, decltype(arguments),
                                                    std::remove_reference_t<decltype(result)>...>) {
            const registry_lock lock;
            std::apply([&](const auto &...role) { (conclude_role(role, made, arguments, result...), ...); }, Row.all);
        }
        if (made.has_entered())
            made.judge_threads();
        if constexpr (row_of_it::template asks<call, decltype(arguments),
                                               std::remove_reference_t<decltype(result)>...>) {
            if (asked_for().order)
                std::apply([&](const auto &...role) { (ask_role(role, made, arguments, result...), ...); }, Row.all);
        }
        made.report_misuse();
    };
    if constexpr (std::is_void_v<Result>) {
        plain(given...);
        conclude();
    } else {
        Result result = plain(given...);
        conclude(result);
        return result;
    }
}

} // namespace mova::checked

#endif
