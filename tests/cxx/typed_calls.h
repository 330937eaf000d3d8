/* SPDX-License-Identifier: MIT */
/* Puts the typed layer under the interpreters of the models: included ahead of one, it takes the place of the C functions
   that the layer has an operation for. What an interpreter then compares with its model, every record field, host call and
   callback, is what the layer leaves and does.

   Each is an object, not a function: the compiler finds it first, in the interpreters' namespace, and looks no further. It
   lends the head to an owner for one call. */
#ifndef MOVA_TESTS_CXX_TYPED_CALLS_H
#define MOVA_TESTS_CXX_TYPED_CALLS_H

#include <mova/cxx.h>

#include <cstring>
#include <stdexcept>

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

/* Calls `work` with a bytes<> of the size, or `otherwise`. */
template <class Work, class Otherwise>
auto with_element(std::size_t size, Work work, Otherwise otherwise)
{
    switch (size) {
    case 1: return work(bytes<1>());
    case 3: return work(bytes<3>());
    case 8: return work(bytes<8>());
    case 12: return work(bytes<12>());
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

} // namespace mova::test

#endif
