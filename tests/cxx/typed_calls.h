/* SPDX-License-Identifier: MIT */
/* Puts the typed layer under the interpreters of the models: included ahead of one, it takes the place of the C functions
   that the layer has an operation for. What an interpreter then compares with its model, every record field, host call and
   callback, is what the layer leaves and does.

   Each is an object, not a function: the compiler finds it first, in the interpreters' namespace, and looks no further. It
   lends the head to an owner for one call. */
#ifndef MOVA_TESTS_CXX_TYPED_CALLS_H
#define MOVA_TESTS_CXX_TYPED_CALLS_H

#include <mova/cxx.h>

#include <mova/clut/internal/table_state.h>
#include <tests/support/recording_host.h>

#include <cstring>
#include <stdexcept>
#include <vector>

namespace mova::test {

/* Calls `work` with an owner of the head, which it gives back. */
template <class Owner, class Head, class Work>
auto lend(Head *head, Work work)
{
    Owner owner(head);
    struct give_back {
        Owner &lent;
        ~give_back() { static_cast<void>(lent.release()); }
    } guard = {owner};
    return work(owner);
}

template <class Owner>
using position_of = typename std::remove_reference_t<Owner>::position;

inline void require_same(bool same, const char *what)
{
    if (!same)
        throw std::logic_error(what);
}

/* Does `work`, of which the log shall say nothing. */
template <class Work>
auto unrecorded(Work work)
{
    recording_host &host = recording_host::get();
    struct put_back {
        recording_host &host;
        std::vector<std::string> kept;
        ~put_back()
        {
            host.take_log();
            for (std::string &line : kept)
                host.write_down(std::move(line));
        }
    } guard = {host, host.take_log()};
    return work();
}

/* Takes a step of a C iterator by a walk of the layer, whose predicate asks the iterator's test. Stores what was looked at
   last, and returns whether it was accepted. */
template <class Links, class Iterator>
int step_by_walk(Iterator *iterator, typename Links::node *&reached)
{
    struct put_back {
        Iterator *iterator;
        decltype(Iterator::test) test;
        ~put_back() { iterator->test = test; }
    } guard = {iterator, std::exchange(iterator->test, nullptr)};
    bool looked = false;
    const auto accepts = [&](const auto &item) {
        looked = true;
        if constexpr (std::is_pointer_v<typename Links::value_type>)
            return !guard.test || guard.test(const_cast<char *>(item));
        else
            return !guard.test || guard.test(const_cast<typename Links::value_type *>(std::addressof(item)));
    };
    mova::position_walk<Links, mova::circulator<Links>, decltype(accepts)> walk(*iterator, accepts);
    bool more;
    try {
        more = walk.begin() != std::default_sentinel;
    } catch (...) {
        *iterator = walk.get();
        throw;
    }
    *iterator = walk.get();
    if (looked)
        reached = static_cast<typename Links::node *>(iterator->current);
    return more;
}

/* ---- pointer list ---- */

using lent_pointers = mova::pointer_list<char>;
using lent_position = lent_pointers::position;

inline char *byte_at(void *item)
{
    return static_cast<char *>(item);
}

inline constexpr auto GL_append_after_last = [](GL_list *list, void *item) {
    return lend<lent_pointers>(list, [=](auto &l) { return l.append(byte_at(item)).get(); });
};
inline constexpr auto GL_insert_before_first = [](GL_list *list, void *item) {
    return lend<lent_pointers>(list, [=](auto &l) { return l.prepend(byte_at(item)).get(); });
};
inline constexpr auto GL_insert_before = [](GL_list *list, GL_node *at, void *item) {
    return lend<lent_pointers>(list, [=](auto &l) { return l.insert_before(lent_position(at), byte_at(item)).get(); });
};
inline constexpr auto GL_insert_after = [](GL_list *list, GL_node *at, void *item) {
    return lend<lent_pointers>(list, [=](auto &l) { return l.insert_after(lent_position(at), byte_at(item)).get(); });
};
inline constexpr auto GL_insert_unique = [](GL_list *list, void *item) {
    return lend<lent_pointers>(list, [=](auto &l) { return l.insert_unique(byte_at(item)).get(); });
};
inline constexpr auto GL_find_item = [](GL_list *list, void *item, GL_node **position) {
    *position = lend<lent_pointers>(list, [=](auto &l) { return l.find(byte_at(item)).get(); });
    return *position ? 1 : 0;
};
inline constexpr auto GL_remove_item = [](GL_list *list, GL_node *at) {
    const GL_node *const successor = at->next;
    if (lend<lent_pointers>(list, [=](auto &l) { return l.remove(lent_position(at)).get(); }) != successor)
        throw std::logic_error("removal gave another successor");
};
inline constexpr auto GL_move_before_first = [](GL_list *list, GL_node *at) {
    lend<lent_pointers>(list, [=](auto &l) { l.move_to_front(lent_position(at)); });
};
inline constexpr auto GL_make_empty = [](GL_list *list) { lend<lent_pointers>(list, [](auto &l) { l.clear(); }); };
inline constexpr auto GL_append_list = [](GL_list *target, GL_list **source) {
    lend<lent_pointers>(target, [=](auto &l) { l.append(lent_pointers(std::exchange(*source, nullptr))); });
};
inline constexpr auto GL_copy = [](GL_list *list) {
    return lend<lent_pointers>(list, [](auto &l) { return l.copy().release(); });
};
inline constexpr auto GL_release = [](GL_list **list) { lent_pointers(std::exchange(*list, nullptr)); };

inline constexpr auto GL_swap_item = [](GL_node *at, void **item) {
    GL_list unread = {nullptr, nullptr, 0};
    *item = lend<lent_pointers>(&unread, [=](auto &l) { return l.replace(lent_position(at), byte_at(*item)); });
};
inline constexpr auto GL_total_copy = [](GL_list *list, GL_copy_fn copy_item) {
    return lend<lent_pointers>(list, [=](auto &l) {
        return l.copy([=](const char *item) { return byte_at(copy_item(const_cast<char *>(item))); }).release();
    });
};
inline constexpr auto GL_count_items = [](const GL_list *list) {
    return static_cast<std::int32_t>(
        lend<lent_pointers>(const_cast<GL_list *>(list), [](auto &l) { return l.size(); }));
};

/* How the items of the list die that is made empty: by the callback, which is given the field of the node that dies next. */
struct dies_by_callback {
    void operator()(char *item) const
    {
        GL_node *const dying = std::exchange(next, next->next);
        require_same(dying->item == item, "another item dies");
        free_item(&dying->item);
    }
    static inline GL_node *next = nullptr;
    static inline GL_free_fn free_item = nullptr;
};
using lent_owners = mova::pointer_list<char, dies_by_callback>;

inline lent_owners owning(GL_list *list, GL_free_fn free_item)
{
    dies_by_callback::next = list ? list->first : nullptr;
    dies_by_callback::free_item = free_item;
    return lent_owners(list);
}

/* The layer deletes no null pointers; the C functions give those to the callback too. */
inline bool holds_null(const GL_list *list)
{
    const GL_node *at = list ? list->first : nullptr;
    while (at && at->item)
        at = at->next;
    return at != nullptr;
}

inline constexpr auto GL_total_make_empty = [](GL_list *list, GL_free_fn free_item) {
    if (holds_null(list)) {
        ::GL_total_make_empty(list, free_item);
        return;
    }
    lent_owners lent = owning(list, free_item);
    lent.clear();
    static_cast<void>(lent.release());
};
inline constexpr auto GL_total_release = [](GL_list **list, GL_free_fn free_item) {
    if (holds_null(*list)) {
        ::GL_total_release(list, free_item);
        return;
    }
    owning(std::exchange(*list, nullptr), free_item);
};
inline constexpr auto GL_next_position = [](GL_iterator *iterator, GL_node **position) {
    return step_by_walk<mova::pointer_links<char>>(iterator, *position);
};
inline constexpr auto GL_next_item = [](GL_iterator *iterator, void **item) {
    GL_node *reached = nullptr;
    const int more = step_by_walk<mova::pointer_links<char>>(iterator, reached);
    if (reached)
        *item = reached->item;
    return more;
};

/* ---- elements: of the sizes that the interpreters take ---- */

template <std::size_t Size>
struct bytes {
    unsigned char each[Size];

    static bytes of(const void *element)
    {
        bytes copy;
        std::memcpy(&copy, element, Size);
        return copy;
    }
};

/* Calls `work` with a bytes<> of the size, or `otherwise`: no type has the size 0. */
template <class Work, class Otherwise>
auto with_element(std::size_t size, Work work, Otherwise otherwise)
{
    switch (size) {
    case 1: return work(bytes<1>());
    case 3: return work(bytes<3>());
    case 4: return work(bytes<4>());
    case 8: return work(bytes<8>());
    case 12: return work(bytes<12>());
    case 16: return work(bytes<16>());
    case 40: return work(bytes<40>());
    default: return otherwise();
    }
}

/* Lends the head to a list or to a ring of such elements. */
template <class Work, class Otherwise>
auto lend_elements(EL_list *list, Work work, Otherwise otherwise)
{
    return with_element(
        list->element_size,
        [=](auto element) {
            using T = decltype(element);
            return list->closed ? lend<mova::element_ring<T>>(list, [=](auto &l) { return work(l, element); })
                                : lend<mova::element_list<T>>(list, [=](auto &l) { return work(l, element); });
        },
        otherwise);
}

inline constexpr auto EL_append_after_last = [](EL_list *list, const void *value) {
    return lend_elements(
        list, [=](auto &l, auto element) { return l.append(element.of(value)).get(); },
        [=] { return ::EL_append_after_last(list, value); });
};
inline constexpr auto EL_insert_before_first = [](EL_list *list, const void *value) {
    return lend_elements(
        list, [=](auto &l, auto element) { return l.prepend(element.of(value)).get(); },
        [=] { return ::EL_insert_before_first(list, value); });
};
inline constexpr auto EL_insert_before = [](EL_list *list, EL_node *at, const void *value) {
    return lend_elements(
        list,
        [=](auto &l, auto element) { return l.insert_before(position_of<decltype(l)>(at), element.of(value)).get(); },
        [=] { return ::EL_insert_before(list, at, value); });
};
inline constexpr auto EL_insert_after = [](EL_list *list, EL_node *at, const void *value) {
    return lend_elements(
        list,
        [=](auto &l, auto element) { return l.insert_after(position_of<decltype(l)>(at), element.of(value)).get(); },
        [=] { return ::EL_insert_after(list, at, value); });
};
inline constexpr auto EL_remove_item = [](EL_list *list, EL_node *at) {
    lend_elements(
        list, [=](auto &l, auto) { static_cast<void>(l.remove(position_of<decltype(l)>(at))); },
        [=] { ::EL_remove_item(list, at); });
};
inline constexpr auto EL_remove_items_inbetween = [](EL_list *list, EL_node *from, EL_node *to) {
    lend_elements(
        list, [=](auto &l, auto) { l.remove(position_of<decltype(l)>(from), position_of<decltype(l)>(to)); },
        [=] { ::EL_remove_items_inbetween(list, from, to); });
};
inline constexpr auto EL_reverse = [](EL_list *list) {
    lend_elements(
        list, [](auto &l, auto) { l.reverse(); }, [=] { ::EL_reverse(list); });
};
inline constexpr auto EL_get_index = [](EL_list *list, EL_node *at) {
    return lend_elements(
        list, [=](auto &l, auto) { return l.index_of(position_of<decltype(l)>(at)); },
        [=] { return ::EL_get_index(list, at); });
};
inline constexpr auto EL_total_copy = [](EL_list *list) {
    return lend_elements(
        list, [](auto &l, auto) { return l.copy().release(); }, [=] { return ::EL_total_copy(list); });
};
inline constexpr auto EL_append_list = [](EL_list *target, EL_list **source) {
    with_element(
        target->element_size,
        [=](auto element) {
            using list = mova::element_list<decltype(element)>;
            lend<list>(target, [=](auto &l) { l.append(list(std::exchange(*source, nullptr))); });
        },
        [=] { ::EL_append_list(target, source); });
};

inline constexpr auto EL_total_copy_inbetween = [](EL_list *list, EL_node *from, EL_node *to) {
    return with_element(
        list->element_size,
        [=](auto element) {
            using open = mova::element_list<decltype(element)>;
            using position = typename open::position;
            return list->closed
                       ? ::EL_total_copy_inbetween(list, from, to)
                       : lend<open>(list, [=](auto &l) { return l.copy(position(from), position(to)).release(); });
        },
        [=] { return ::EL_total_copy_inbetween(list, from, to); });
};
inline constexpr auto EL_get_pos_at_index = [](const EL_list *list, int32_t index) {
    return lend_elements(
        const_cast<EL_list *>(list), [=](auto &l, auto) { return l.position_at(index).get(); },
        [=] { return ::EL_get_pos_at_index(list, index); });
};
inline constexpr auto EL_count_items = [](const EL_list *list) {
    return lend_elements(
        const_cast<EL_list *>(list), [](auto &l, auto) { return static_cast<int32_t>(l.size()); },
        [=] { return ::EL_count_items(list); });
};
/* A ring stays one, where the C function opens it. */
inline constexpr auto EL_make_empty = [](EL_list *list) {
    const bool was_closed = list->closed != 0;
    lend_elements(
        list, [](auto &l, auto) { l.clear(); }, [=] { ::EL_make_empty(list); });
    if (was_closed && list->element_size != 0) {
        require_same(list->closed != 0, "a ring was opened");
        list->closed = 0;
    }
};
inline constexpr auto EL_release = [](EL_list **list) {
    if (*list)
        lend_elements(
            *list, [=](auto &l, auto) { l = nullptr, *list = nullptr; }, [=] { ::EL_release(list); });
};
inline constexpr auto EL_next_position = [](EL_iterator *iterator, EL_node **position) {
    return step_by_walk<mova::element_links<char>>(iterator, *position);
};
inline constexpr auto EL_next_item = [](EL_iterator *iterator, void **item) {
    EL_node *reached = nullptr;
    const int more = step_by_walk<mova::element_links<char>>(iterator, reached);
    if (reached)
        *item = EL_element(reached);
    return more;
};

/* The conversions take the head along. */
inline constexpr auto EL_set_closed = [](EL_list *list) {
    with_element(
        list->element_size,
        [=](auto element) { static_cast<void>(mova::element_list<decltype(element)>(list).close().release()); },
        [=] { ::EL_set_closed(list); });
};
inline constexpr auto EL_reset_closed = [](EL_list *list) {
    with_element(
        list->element_size,
        [=](auto element) { static_cast<void>(mova::element_ring<decltype(element)>(list).open().release()); },
        [=] { ::EL_reset_closed(list); });
};
inline constexpr auto EL_roll = [](EL_list *list, EL_node *at) {
    with_element(
        list->element_size,
        [=](auto element) {
            using ring = mova::element_ring<decltype(element)>;
            lend<ring>(list, [=](auto &l) { l.roll(typename ring::position(at)); });
        },
        [=] { ::EL_roll(list, at); });
};
inline constexpr auto EL_make_open_at_position = [](EL_list *list, EL_node *at) {
    return with_element(
        list->element_size,
        [=](auto element) {
            using ring = mova::element_ring<decltype(element)>;
            if (!list->closed)
                return ::EL_make_open_at_position(list, at);
            return ring(list).open_at(typename ring::position(at)).release()->first;
        },
        [=] { return ::EL_make_open_at_position(list, at); });
};
inline constexpr auto EL_remove_and_get_end_part = [](EL_list *list, EL_node *at) {
    return with_element(
        list->element_size,
        [=](auto element) {
            using ring = mova::element_ring<decltype(element)>;
            using open = mova::element_list<decltype(element)>;
            if (!list->closed)
                return lend<open>(list, [=](auto &l) { return l.split(typename open::position(at)).release(); });
            auto [front, end] = ring(list).split(typename ring::position(at));
            static_cast<void>(front.release());
            return end.release();
        },
        [=] { return ::EL_remove_and_get_end_part(list, at); });
};

/* ---- element stack, double list ---- */

inline constexpr auto ES_push = [](ES_stack *stack, const void *value) {
    return with_element(
        stack->element_size,
        [=](auto element) {
            using T = decltype(element);
            return lend<mova::element_stack<T>>(stack, [=](auto &s) {
                s.push(T::of(value));
                return stack->last;
            });
        },
        [=] { return ::ES_push(stack, value); });
};
inline constexpr auto ES_pop = [](ES_stack *stack, void *buffer) {
    return with_element(
        stack->element_size,
        [=](auto element) {
            using T = decltype(element);
            return lend<mova::element_stack<T>>(stack, [=](auto &s) {
                const std::optional<T> top = s.pop();
                if (top)
                    std::memcpy(buffer, &*top, sizeof(T));
                return top ? 1 : 0;
            });
        },
        [=] { return ::ES_pop(stack, buffer); });
};
inline constexpr auto DBLL_sort = [](DBLL_list *list) { lend<mova::double_list>(list, [](auto &l) { l.sort(); }); };
inline constexpr auto DBLL_add_double = [](DBLL_list *list, double value) {
    return list->closed ? ::DBLL_add_double(list, value)
                        : lend<mova::double_list>(list, [=](auto &l) { return l.append(value).get(); });
};
inline constexpr auto DBLL_find_index_of_nearest = [](DBLL_list *list, double value, double distance, double *nearest) {
    const auto found = lend<mova::double_list>(list, [=](auto &l) { return l.nearest(value, distance); });
    *nearest = found.distance;
    return found.index;
};

/* Of what is appended the C function may say 0 too. */
inline constexpr auto DBLL_add_double_unique = [](DBLL_list *list, double value, double tolerance) {
    if (list->closed || !list->last || !(value < *static_cast<double *>(EL_element(list->last))))
        return ::DBLL_add_double_unique(list, value, tolerance);
    return lend<mova::double_list>(list, [=](auto &l) { return l.insert_unique(value, tolerance) ? 1 : 0; });
};
inline constexpr auto DBLL_remove_double_occ = [](DBLL_list *list, double tolerance) {
    lend<mova::double_list>(list, [=](auto &l) { l.thin_out(tolerance); });
};
inline constexpr auto DBLL_add_to_all = [](DBLL_list *list, double offset) {
    lend<mova::double_list>(list, [=](auto &l) { l.add_to_all(offset); });
};

/* ---- intrusive list ---- */

struct linked {
    mova::links links;
};

template <class Work>
auto lend_linked(SL_list *list, Work work)
{
    return list->closed ? lend<mova::intrusive_ring<linked, &linked::links>>(list, work)
                        : lend<mova::intrusive_list<linked, &linked::links>>(list, work);
}

inline linked &linked_at(void *item)
{
    return *static_cast<linked *>(item);
}

inline constexpr auto SL_append_after_last = [](SL_list *list, void *item) {
    lend_linked(list, [=](auto &l) { l.append(linked_at(item)); });
};
inline constexpr auto SL_insert_before_first = [](SL_list *list, void *item) {
    lend_linked(list, [=](auto &l) { l.prepend(linked_at(item)); });
};
inline constexpr auto SL_insert_before = [](SL_list *list, void *at, void *item) {
    lend_linked(list, [=](auto &l) { l.insert_before(l.position_of(linked_at(at)), linked_at(item)); });
};
inline constexpr auto SL_insert_after = [](SL_list *list, void *at, void *item) {
    lend_linked(list, [=](auto &l) { l.insert_after(l.position_of(linked_at(at)), linked_at(item)); });
};
inline constexpr auto SL_remove_item = [](SL_list *list, void *item) {
    lend_linked(list, [=](auto &l) { l.remove(l.position_of(linked_at(item))); });
};
inline constexpr auto SL_reverse = [](SL_list *list) { lend_linked(list, [](auto &l) { l.reverse(); }); };
inline constexpr auto SL_append_list = [](SL_list *target, SL_list **source) {
    using open = mova::intrusive_list<linked, &linked::links>;
    lend<open>(target, [=](auto &l) { l.append(open(std::exchange(*source, nullptr))); });
};

inline constexpr auto SL_set_closed = [](SL_list *list) {
    static_cast<void>(mova::intrusive_list<linked, &linked::links>(list).close().release());
};
inline constexpr auto SL_reset_closed = [](SL_list *list) {
    static_cast<void>(mova::intrusive_ring<linked, &linked::links>(list).open().release());
};
inline constexpr auto SL_next_item = [](SL_iterator *iterator, void **item) {
    mova::links *reached = nullptr;
    const int more = step_by_walk<mova::member_links<linked, &linked::links>>(iterator, reached);
    if (more)
        *item = reached;
    return more;
};

/* How the records of a list die. */
struct linked_dies_by_callback {
    void operator()(linked *item) const
    {
        void *variable = item;
        free_item(&variable);
    }
    static inline SL_free_fn free_item = nullptr;
};
using lent_linked_owners = mova::intrusive_list<linked, &linked::links, linked_dies_by_callback>;

inline constexpr auto SL_make_empty = [](SL_list *list, SL_free_fn free_item) {
    if (list->closed)
        return ::SL_make_empty(list, free_item);
    linked_dies_by_callback::free_item = free_item;
    lend<lent_linked_owners>(list, [](auto &l) { l.clear(); });
};
inline constexpr auto SL_total_release = [](SL_list **list, SL_free_fn free_item) {
    linked_dies_by_callback::free_item = free_item;
    lent_linked_owners(std::exchange(*list, nullptr));
};

/* ---- arrays ---- */

/* Lends a record, which the owner holds by value. */
template <class Work, class Otherwise>
auto lend_block(GB_block *block, Work work, Otherwise otherwise)
{
    return with_element(
        block->element_size,
        [=](auto element) {
            struct give_back {
                mova::block_array<decltype(element)> lent;
                GB_block *block;
                ~give_back() { *block = lent.release(); }
            } guard = {mova::block_array<decltype(element)>(*block), block};
            return work(guard.lent, element);
        },
        otherwise);
}

inline constexpr auto GB_append_after_last = [](GB_block *block, const void *value) {
    return lend_block(
        block,
        [=](auto &b, auto element) {
            b.append(element.of(value));
            return static_cast<int32_t>(b.size()) - 1;
        },
        [=] { return ::GB_append_after_last(block, value); });
};
inline constexpr auto GB_insert_item = [](GB_block *block, int32_t i, const void *value) {
    lend_block(
        block, [=](auto &b, auto element) { b.insert(static_cast<std::size_t>(i), element.of(value)); },
        [=] { ::GB_insert_item(block, i, value); });
};
inline constexpr auto GB_remove_item = [](GB_block *block, int32_t i) {
    lend_block(
        block, [=](auto &b, auto) { b.remove(static_cast<std::size_t>(i)); }, [=] { ::GB_remove_item(block, i); });
};
inline constexpr auto GB_roll = [](GB_block *block, int32_t n) {
    lend_block(
        block, [=](auto &b, auto) { b.roll(n); }, [=] { ::GB_roll(block, n); });
};
inline constexpr auto GB_reverse = [](GB_block *block) {
    lend_block(
        block, [](auto &b, auto) { b.reverse(); }, [=] { ::GB_reverse(block); });
};
inline constexpr auto GB_copy = [](GB_block *made, GB_block *source) {
    lend_block(
        source, [=](auto &b, auto) { *made = b.copy().release(); }, [=] { ::GB_copy(made, source); });
};

/* The layer leaves the other without storage, the C function only without capacity. */
inline constexpr auto GB_append_block = [](GB_block *block, GB_block *other) {
    return lend_block(
        block,
        [=](auto &b, auto element) {
            const std::size_t before = b.size();
            mova::block_array<decltype(element)> given(*other);
            struct give_back {
                decltype(given) &lent;
                ~give_back() { static_cast<void>(lent.release()); }
            } guard = {given};
            b.append(std::move(given));
            require_same(!given.get()->data && given.empty() && given.capacity() == 0, "something is left");
            other->capacity = 0;
            return static_cast<int32_t>(before);
        },
        [=] { return ::GB_append_block(block, other); });
};
inline constexpr auto GB_copy_into = [](GB_block *target, const GB_block *source) {
    lend_block(
        target,
        [=](auto &b, auto element) {
            mova::block_array<decltype(element)> from(*source);
            struct give_back {
                decltype(from) &lent;
                ~give_back() { static_cast<void>(lent.release()); }
            } guard = {from};
            b.assign(from);
        },
        [=] { ::GB_copy_into(target, source); });
};
inline constexpr auto GB_remove_last_item = [](GB_block *block) {
    lend_block(
        block, [](auto &b, auto) { b.remove_last(); }, [=] { ::GB_remove_last_item(block); });
};
inline constexpr auto GB_make_empty = [](GB_block *block) {
    lend_block(
        block, [](auto &b, auto) { b.clear(); }, [=] { ::GB_make_empty(block); });
};
inline constexpr auto GB_set_number_of_elements = [](GB_block *block, int32_t n) {
    if (n < 0)
        return ::GB_set_number_of_elements(block, n);
    lend_block(
        block, [=](auto &b, auto) { b.set_capacity(static_cast<std::size_t>(n)); },
        [=] { ::GB_set_number_of_elements(block, n); });
};
inline constexpr auto GB_set_closed = [](GB_block *block) {
    lend_block(
        block, [](auto &b, auto) { b.close(); }, [=] { ::GB_set_closed(block); });
};
inline constexpr auto GB_reset_closed = [](GB_block *block) {
    lend_block(
        block, [](auto &b, auto) { b.open(); }, [=] { ::GB_reset_closed(block); });
};
inline constexpr auto GB_advance = [](GB_block *block, int32_t i, int32_t steps) {
    return lend_block(
        block, [=](auto &b, auto) { return b.advance(i, steps); }, [=] { return ::GB_advance(block, i, steps); });
};

template <class Work, class Otherwise>
auto lend_array(DA_array *array, Work work, Otherwise otherwise)
{
    return with_element(
        array->element_size,
        [=](auto element) {
            return lend<mova::dynamic_array<decltype(element)>>(array, [=](auto &a) { return work(a, element); });
        },
        otherwise);
}

inline constexpr auto DA_append = [](DA_array *array, const void *source, int32_t n) {
    lend_array(
        array,
        [=](auto &a, auto element) {
            using T = decltype(element);
            if (n == 1)
                a.append(T::of(source));
            else
                a.append(std::span(static_cast<const T *>(source), static_cast<std::size_t>(n)));
        },
        [=] { ::DA_append(array, source, n); });
};
inline constexpr auto DA_insert = [](DA_array *array, int32_t i, const void *source, int32_t n) {
    lend_array(
        array,
        [=](auto &a, auto element) {
            using T = decltype(element);
            a.insert(static_cast<std::size_t>(i),
                     std::span(static_cast<const T *>(source), static_cast<std::size_t>(n)));
        },
        [=] { ::DA_insert(array, i, source, n); });
};
inline constexpr auto DA_delete = [](DA_array *array, int32_t i, int32_t n) {
    lend_array(
        array, [=](auto &a, auto) { a.cut(static_cast<std::size_t>(i), static_cast<std::size_t>(n)); },
        [=] { ::DA_delete(array, i, n); });
};
inline constexpr auto DA_copy = [](DA_array *array) {
    return lend_array(
        array, [](auto &a, auto) { return a.copy().release(); }, [=] { return ::DA_copy(array); });
};
inline constexpr auto DA_roll = [](DA_array *array, int32_t n) {
    lend_array(
        array, [=](auto &a, auto) { a.roll(n); }, [=] { ::DA_roll(array, n); });
};

inline constexpr auto DA_get_item = [](DA_array *array, int32_t i) -> void * {
    return lend_array(
        array, [=](auto &a, auto) -> void * { return &a.grow_to(static_cast<std::size_t>(i)); },
        [=] { return ::DA_get_item(array, i); });
};
inline constexpr auto DA_extend = [](DA_array *array, int32_t n) {
    if (n < 0)
        return ::DA_extend(array, n);
    lend_array(
        array, [=](auto &a, auto) { a.reserve(static_cast<std::size_t>(n)); }, [=] { ::DA_extend(array, n); });
};
inline constexpr auto DA_setsize = [](DA_array *array, int32_t n) {
    lend_array(
        array, [=](auto &a, auto) { a.resize(static_cast<std::size_t>(n)); }, [=] { ::DA_setsize(array, n); });
};
inline constexpr auto DA_truncate = [](DA_array *array, int32_t n) {
    lend_array(
        array, [=](auto &a, auto) { a.truncate(static_cast<std::size_t>(n)); }, [=] { ::DA_truncate(array, n); });
};
inline constexpr auto DA_reset = [](DA_array *array) {
    lend_array(
        array, [](auto &a, auto) { a.clear(); }, [=] { ::DA_reset(array); });
};
inline constexpr auto DA_clear = [](DA_array *array) {
    lend_array(
        array, [](auto &a, auto) { a.clear_storage(); }, [=] { ::DA_clear(array); });
};
inline constexpr auto DA_reverse = [](DA_array *array) {
    lend_array(
        array, [](auto &a, auto) { a.reverse(); }, [=] { ::DA_reverse(array); });
};
inline constexpr auto DA_release = [](DA_array *array) {
    if (array)
        with_element(
            array->element_size, [=](auto element) { mova::dynamic_array<decltype(element)> owner(array); },
            [=] { ::DA_release(array); });
};

inline constexpr auto SA_adapt_for_insert = [](DA_array *array, int32_t at) {
    lend<mova::sorted_numbers>(array, [=](auto &a) { a.companion_inserted(at); });
};
inline constexpr auto SA_adapt_for_reverse = [](DA_array *array, int32_t count) {
    lend<mova::sorted_numbers>(array, [=](auto &a) { a.companion_reversed(count); });
};
inline constexpr auto SA_adapt_for_roll = [](DA_array *array, int32_t n, int32_t count) {
    lend<mova::sorted_numbers>(array, [=](auto &a) { a.companion_rolled(n, count); });
};
inline constexpr auto SA_add_number = [](DA_array *array, int32_t number) {
    lend<mova::sorted_numbers>(array, [=](auto &a) { a.add(number); });
};
inline constexpr auto SA_remove_number = [](DA_array *array, int32_t number) {
    lend<mova::sorted_numbers>(array, [=](auto &a) { a.remove(number); });
};
inline constexpr auto SA_check_number = [](DA_array *array, int32_t number) {
    return lend<mova::sorted_numbers>(array, [=](auto &a) { return a.contains(number) ? 1 : 0; });
};
inline constexpr auto SA_adapt_for_remove = [](DA_array *array, int32_t at) {
    lend<mova::sorted_numbers>(array, [=](auto &a) { a.companion_removed(at); });
};

inline constexpr auto io_lut_add = [](DA_array *table, void *pointer) {
    return lend<mova::id_table<char>>(table, [=](auto &t) { return t.add(byte_at(pointer)); });
};
inline constexpr auto io_lut_look_ptr = [](DA_array *table, int32_t id) -> void * {
    return lend<mova::id_table<char>>(table, [=](auto &t) { return t.find(id); });
};

inline constexpr auto io_lut_set = [](DA_array *table, void *pointer, int32_t id) {
    lend<mova::id_table<char>>(table, [=](auto &t) { t.set(id, byte_at(pointer)); });
};
inline constexpr auto io_lut_get_ptr = [](DA_array *table, int32_t id) -> void * {
    /* Where there is none a host may go on after the raise, and there is nothing that a reference could refer to. */
    return lend<mova::id_table<char>>(table, [=](auto &t) {
        return t.find(id) ? static_cast<void *>(std::addressof(t[id])) : ::io_lut_get_ptr(t.get(), id);
    });
};
inline constexpr auto io_lut_look_id = [](DA_array *table, const void *pointer) {
    return lend<mova::id_table<char>>(table, [=](auto &t) { return t.id_of(static_cast<const char *>(pointer)); });
};
inline constexpr auto io_lut_allow_reuse = [](DA_array *table) {
    lend<mova::id_table<char>>(table, [](auto &t) { t.allow_reuse(); });
};
inline constexpr auto io_lut_release = [](DA_array **table) {
    mova::id_table<char> owner(std::exchange(*table, nullptr));
};

/* ---- tables ---- */

using lent_table = mova::hash_table<mova_word, mova_word>;

inline constexpr auto HSH_set_value = [](HSH_table *table, mova_word key, mova_word value) {
    lend<lent_table>(table, [=](auto &t) { t.set(key, value); });
    return key ? value : 0;
};
inline constexpr auto HSH_get_value = [](HSH_table *table, mova_word key) {
    return lend<lent_table>(table, [=](auto &t) {
        if (t.find(key).value_or(0) != t.get_or(key))
            throw std::logic_error("two ways to look up disagree");
        return t.get_or(key);
    });
};
inline constexpr auto HSH_contains_key = [](HSH_table *table, mova_word key) {
    return lend<lent_table>(table, [=](auto &t) { return t.contains(key) ? 1 : 0; });
};
inline constexpr auto HSH_remove_entry = [](HSH_table *table, mova_word key) {
    return lend<lent_table>(table, [=](auto &t) { return t.remove(key) ? 0 : -1; });
};

using lent_lookup = mova::pointer_lookup<mova_word, mova_word>;

inline constexpr auto mova_lu_add = [](mova_lookup *lookup, mova_word key, mova_word value) {
    return lend<lent_lookup>(lookup, [=](auto &l) { return l.add(key, value); });
};
inline constexpr auto mova_lu_get = [](mova_lookup *lookup, mova_word key) {
    return lend<lent_lookup>(lookup, [=](auto &l) { return l.find(key); });
};
inline constexpr auto mova_lu_remove = [](mova_lookup *lookup, mova_word key) {
    lend<lent_lookup>(lookup, [=](auto &l) { l.remove(key); });
};

/* ---- balanced tree: ordered as its head says ---- */

struct any_item {
    char first_byte;
};
struct as_the_head_says {
    std::int32_t operator()(const any_item &a, const any_item &b) const
    {
        return asked(const_cast<any_item *>(&a), const_cast<any_item *>(&b));
    }
    static inline GT_compare asked = nullptr;
};
using lent_tree = mova::balanced_multiset<any_item, as_the_head_says>;

template <class Work>
auto lend_tree(GT_tree *t, Work work)
{
    as_the_head_says::asked = t->compare;
    return lend<lent_tree>(t, work);
}
inline any_item &item_at(void *item)
{
    return *static_cast<any_item *>(item);
}

inline constexpr auto GT_insert_item = [](GT_tree *t, void *item) {
    return lend_tree(t, [=](auto &l) { return l.insert(item_at(item)).first.get(); });
};
inline constexpr auto GT_search_item = [](GT_tree *t, void *key, GT_tree_item **at) {
    *at = lend_tree(t, [=](auto &l) { return l.search(item_at(key)).get(); });
    return *at ? 1 : 0;
};
inline constexpr auto GT_find_item = [](GT_tree *t, void *item, GT_tree_item **at) {
    *at = lend_tree(t, [=](auto &l) { return l.find_item(item_at(item)).get(); });
    return *at ? 1 : 0;
};
inline constexpr auto GT_remove_item = [](GT_tree *t, GT_tree_item *at) {
    lend_tree(t, [=](auto &l) { l.remove(lent_tree::position(at)); });
};
inline constexpr auto GT_remove_item_global = [](GT_tree *t, GT_tree_item *at) {
    lend_tree(t, [=](auto &l) { static_cast<void>(l.take_anywhere(lent_tree::position(at))); });
};
inline constexpr auto GT_find_and_remove_item = [](GT_tree *t, void *item) {
    lend_tree(t, [=](auto &l) { static_cast<void>(l.take_item(item_at(item))); });
};

inline constexpr auto GT_remove_first_item = [](GT_tree *t) {
    if (!t->first)
        return ::GT_remove_first_item(t);
    lend_tree(t, [](auto &l) { static_cast<void>(l.take_first()); });
};
inline constexpr auto GT_make_empty = [](GT_tree *t) { lend_tree(t, [](auto &l) { l.clear(); }); };
inline constexpr auto GT_release = [](GT_tree **t) { lent_tree(std::exchange(*t, nullptr)); };

/* A tree that frees items of the size that the interpreter takes. */
struct eight_bytes {
    std::int32_t each[2];
};
using lent_owning_tree = mova::balanced_multiset<eight_bytes, as_the_head_says, mova::host_delete>;

inline constexpr auto GT_total_make_empty = [](GT_tree *t, std::size_t item_size) {
    require_same(item_size == sizeof(eight_bytes), "items of another size");
    lend<lent_owning_tree>(t, [](auto &l) { l.clear(); });
};
inline constexpr auto GT_total_release = [](GT_tree **t, std::size_t item_size) {
    require_same(item_size == sizeof(eight_bytes), "items of another size");
    lent_owning_tree(std::exchange(*t, nullptr));
};

/* The layer's sort asks other comparisons, and no host. Its result is held to that of the C function, which is called. */
inline constexpr auto GT_sort = [](GT_tree *t) {
    std::vector<void *> before, sorted;
    for (const GT_tree_item *at = t->first; at; at = at->next)
        before.push_back(at->item);
    unrecorded([t] { lend_tree(t, [](auto &l) { l.sort(); }); });
    auto next = before.begin();
    for (GT_tree_item *at = t->first; at; at = at->next)
        sorted.push_back(std::exchange(at->item, *next++));
    ::GT_sort(t);
    next = sorted.begin();
    for (const GT_tree_item *at = t->first; at; at = at->next)
        require_same(at->item == *next++, "sorting gave another order");
};

using lent_cursor = mova::tree_cursor<any_item>;

inline constexpr auto GT_all_items = [](GT_tree *t) {
    return lend_tree(t, [](auto &l) { return l.positions().release(); });
};
inline constexpr auto GT_next_position = [](GT_tree_iter *iterator, GT_tree_item **position) {
    lent_cursor cursor(iterator);
    const auto at = cursor.next();
    static_cast<void>(cursor.release());
    if (at.get())
        *position = at.get();
    return at.get() ? 1 : 0;
};
inline constexpr auto GT_from_current = [](GT_tree_iter *iterator) {
    return lend<lent_cursor>(iterator, [](auto &c) { return c.from_current().release(); });
};
inline constexpr auto GT_from_next = [](GT_tree_iter *iterator) {
    return lend<lent_cursor>(iterator, [](auto &c) { return c.from_next().release(); });
};
inline constexpr auto GT_end_iterator = [](GT_tree_iter *iterator) { lent_cursor ended(iterator); };

/* ---- swap cache: the entries hold the layer's functions while it is asked for something, else the interpreter's ---- */

struct cached {
    void *as_pointer() { return this; }
};

struct entry_functions {
    cc_size_fn size;
    cc_swap_in_fn swap_in;
    cc_write_back_fn write_back;
    cc_release_fn release;
};
/* What the interpreter registers, and what the layer does. */
inline entry_functions of_the_interpreter = {}, of_the_layer = {};

struct asks_the_interpreter {
    std::size_t size(const cached &item) const
    {
        return unrecorded([&] { return of_the_interpreter.size(const_cast<cached *>(&item)); });
    }
    void fill(cached &item, std::span<std::byte> body) const
    {
        of_the_interpreter.swap_in(&item, body.data(), static_cast<std::uint32_t>(body.size()));
    }
    void write_back(cached &item, std::span<std::byte> body) const
    {
        require_same(body.size() == size(item), "another size is written back");
        of_the_interpreter.write_back(&item, body.data());
    }
    void let_go(cached &item) const { of_the_interpreter.release(&item); }
};
using lent_cache = mova::swap_cache<cached, std::byte, asks_the_interpreter>;

/* The layer's size is compared with the interpreter's, which writes down that it is asked. */
inline std::uint32_t asked_size(void *item)
{
    const std::uint32_t size = of_the_interpreter.size(item);
    require_same(size == of_the_layer.size(item), "another size");
    return size;
}

inline void register_all(cc_cache *cache, const entry_functions &functions)
{
    for (cc_entry *at = cache->first; at; at = at->next) {
        at->size_fn = functions.size;
        at->swap_in_fn = functions.swap_in;
        at->write_back_fn = functions.write_back;
        at->release_fn = functions.release;
    }
}

/* Callbacks may call the cache: only the outermost call exchanges the functions. */
template <class Work>
auto lend_cache(cc_cache *cache, Work work)
{
    static int depth = 0;
    struct give_back {
        cc_cache *cache;
        ~give_back()
        {
            if (--depth == 0)
                register_all(cache, of_the_interpreter);
        }
    } guard = {cache};
    if (depth++ == 0)
        register_all(cache, {asked_size, of_the_layer.swap_in, of_the_layer.write_back, of_the_layer.release});
    return lend<lent_cache>(cache, work);
}

using lent_entry = lent_cache::position;

inline constexpr auto cc_insert = [](cc_cache *cache, void *item, mb_handle handle, cc_size_fn size,
                                     cc_swap_in_fn swap_in, cc_write_back_fn write_back, cc_release_fn release) {
    of_the_interpreter = {size, swap_in, write_back, release};
    return lend_cache(cache, [=](auto &c) {
        cc_entry *const made = c.insert(*static_cast<cached *>(item), handle).get();
        of_the_layer = {made->size_fn, made->swap_in_fn, made->write_back_fn, made->release_fn};
        return made;
    });
};
inline constexpr auto cc_get = [](cc_cache *cache, cc_entry *entry) -> void * {
    return lend_cache(cache, [=](auto &c) {
        const auto body = c.body(lent_entry(entry));
        require_same(body.size() == (body.data() ? asks_the_interpreter().size(*lent_entry(entry)) : 0),
                     "a body of another size");
        return body.data();
    });
};
inline constexpr auto cc_lazy_swap_out = [](cc_cache *cache, cc_entry *entry) {
    lend_cache(cache, [=](auto &c) { c.let_go_next(lent_entry(entry)); });
};
inline constexpr auto cc_swap_out = [](cc_cache *cache, cc_entry *entry) {
    lend_cache(cache, [=](auto &c) { c.swap_out(lent_entry(entry)); });
};
inline constexpr auto cc_flush = [](cc_cache *cache) { lend_cache(cache, [](auto &c) { c.flush(); }); };
inline constexpr auto cc_alloc = [](cc_cache *cache, std::uint32_t size) {
    return lend_cache(cache, [=](auto &c) { return c.alloc(size); });
};
inline constexpr auto cc_free = [](cc_cache *cache, mb_handle *handle) {
    lend_cache(cache, [=](auto &c) { c.free(*handle); });
};
inline constexpr auto cc_remove = [](cc_cache *cache, cc_entry **entry) {
    const cc_entry *const successor = (*entry)->next;
    const cc_entry *const next =
        lend_cache(cache, [=](auto &c) { return c.remove(lent_entry(std::exchange(*entry, nullptr))).get(); });
    require_same(next == successor, "removal gave another successor");
};
inline constexpr auto cc_make_empty = [](cc_cache *cache) { lend_cache(cache, [](auto &c) { c.clear(); }); };

/* ---- colour table ---- */

struct tells_the_interpreter {
    void operator()(std::int32_t index, mova::colour c) const { told(index, c.red, c.green, c.blue); }
    static inline CLUT_callback told = nullptr;
};

inline constexpr auto RGBLUT_init = [](std::int32_t entries, CLUT_callback callback, mova_word client_word) {
    require_same(client_word == 0, "the layer gives no word");
    if (!callback)
        return mova::colour_table::make(entries);
    tells_the_interpreter::told = callback;
    mova::colour_table::make<tells_the_interpreter>(entries);
};
inline constexpr auto CLUT_alloc = [](std::int32_t index) { mova::colour_table::fix(index); };
inline constexpr auto CLUT_set = [](std::int32_t index, std::int16_t red, std::int16_t green, std::int16_t blue) {
    mova::colour_table::set(index, {red, green, blue});
};
/* Of an index below the table the C function leaves the three as they are. */
inline constexpr auto CLUT_get = [](std::int32_t index, std::int16_t *red, std::int16_t *green, std::int16_t *blue) {
    const mova::colour c = mova::colour_table::get(index);
    if (index < 0 && index < clut::table.size)
        return require_same(c == mova::colour{}, "a colour below the table");
    *red = c.red;
    *green = c.green;
    *blue = c.blue;
};
inline constexpr auto CLUT_copy = [](std::int32_t to, std::int32_t from) { mova::colour_table::copy(to, from); };
/* The end of an object cannot raise. */
inline constexpr auto CLUT_release_index = [](std::int32_t index) {
    const bool is_given = index >= 0 && index < clut::table.size && clut::table.states[index] == 2;
    if (is_given)
        mova::dynamic_colour::adopt(index);
    else
        ::CLUT_release_index(index);
};

} // namespace mova::test

#endif
