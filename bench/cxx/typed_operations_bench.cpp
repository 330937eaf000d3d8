/* SPDX-License-Identifier: MIT */
/* Every operation of the typed layer beside the C calls that a program would make in its place: a row each.

       each("find", hashed, typed, c)           both are done for every index
       once("walk", pointers, typed, c)         both are done once, and are linear in the number of items

   The first argument makes what they work on, with so many items in it. Where an operation would change the number of items,
   the row undoes it, in the time that counts: both do the same. */
#include <algorithm>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <bench/scoreboard.h>
#include <mova/cxx.h>

namespace {

using benchmark::DoNotOptimize;

/* ---- how a row is measured ---- */

template <class Make, class Work>
void repeat(benchmark::State &state, size_t count)
{
    auto made = Make()(count);
    for (auto _ : state)
        Work()(made, count);
}

template <class Work>
struct at_each {
    void operator()(auto &made, size_t count) const
    {
        for (size_t i = 0; i < count; ++i)
            Work()(made, i);
    }
};

constexpr size_t few_items = 1000, most_items = 100000;

/* The rows of one family. */
struct family {
    const char *name;
    std::vector<std::pair<size_t, const char *>> sizes = {{few_items, "1e3"}, {most_items, "1e5"}};

    template <class Make, class Typed, class C>
    const family &once(const char *operation, Make, Typed, C) const
    {
        for (const auto &[count, text] : sizes)
            scoreboard::add_sized("X2", std::string(name) + ", " + operation + ", " + text, count, repeat<Make, Typed>,
                                  {{"C calls", repeat<Make, C>, 0.98}});
        return *this;
    }
    template <class Make, class Typed, class C>
    const family &each(const char *operation, Make make, Typed, C) const
    {
        return once(operation, make, at_each<Typed>(), at_each<C>());
    }
};

/* ---- what is in the containers ---- */

struct item {
    mova::links links = {};
    int64_t number = 1;
};
/* One more than is ever listed. */
std::vector<item> items(most_items + 1);
constexpr size_t unlisted = most_items;

/* Has the item read. */
template <class Item>
void look(const Item &each)
{
    if constexpr (std::is_pointer_v<Item>)
        DoNotOptimize(*each);
    else
        DoNotOptimize(each);
}

/* The item of an index. */
template <class Container>
decltype(auto) value(size_t i)
{
    using value_type = typename Container::value_type;
    if constexpr (std::is_same_v<value_type, item>)
        return (items[i]);
    else if constexpr (std::is_pointer_v<value_type>)
        return &items[i];
    else
        return static_cast<value_type>(i);
}

/* The same, as the C functions take it: by its address, and items by theirs. */
template <class Container>
class argument {
public:
    explicit argument(size_t i) : held_(pointer_to(value<Container>(i))) {}
    operator void *() { return address(held_); }

private:
    static item *pointer_to(item &linked) { return &linked; }
    static auto pointer_to(auto number) { return number; }
    static void *address(item *pointer) { return pointer; }
    static void *address(int64_t &number) { return &number; }
    static void *address(double &number) { return &number; }
    decltype(pointer_to(value<Container>(0))) held_;
};

/* One with so many items in it. */
template <class Container>
constexpr auto full = [](size_t count) {
    Container made;
    for (size_t i = 0; i < count; ++i)
        made.append(value<Container>(i));
    return made;
};
template <class Container>
constexpr auto empty = [](size_t) { return Container(); };
/* Two of them. */
template <class Container>
constexpr auto pair_of = [](size_t count) { return std::pair(full<Container>(count), full<Container>(count)); };

/* ---- what is written alike in many rows ---- */

constexpr auto fill = [](auto &made, size_t count) {
    for (size_t i = 0; i < count; ++i)
        made.append(value<std::remove_reference_t<decltype(made)>>(i));
    made.clear();
};
constexpr auto walk = [](const auto &made, size_t) {
    for (auto &&each : made)
        look(each);
};
constexpr auto walk_back = [](const auto &made, size_t) {
    for (auto &&each : made.reversed())
        look(each);
};
constexpr auto walk_positions = [](auto &made, size_t) {
    for (auto at : made.positions())
        look(*at);
};
constexpr auto copy = [](const auto &made, size_t) { made.copy(); };
constexpr auto assign = [](auto &made, size_t) { made.first.assign(made.second); };
constexpr auto reverse = [](auto &made, size_t) { made.reverse(); };
constexpr auto roll_by_one = [](auto &made, size_t) { made.roll(1); };

/* A C function of the head, with arguments that are the same in each call. */
template <auto Function, auto... Arguments>
constexpr auto call = [](auto &made, size_t) { DoNotOptimize((Function(made.get(), Arguments...), 0)); };

/* A walk with a C iterator over items of that type. */
template <class Item, auto Begin, auto Next>
constexpr auto c_walk = [](auto &made, size_t) {
    auto iterator = Begin(made.get());
    for (void *each; Next(&iterator, &each);)
        look(*static_cast<Item *>(each));
};

/* ---- lists ---- */

using pointer_list = mova::pointer_list<item>;
using element_list = mova::element_list<int64_t>;
using element_ring = mova::element_ring<int64_t>;
using linked_list = mova::intrusive_list<item, &item::links>;
using linked_ring = mova::intrusive_ring<item, &item::links>;

/* The C functions of each family, by one name. */
struct pointer_functions {
    static constexpr auto append = GL_append_after_last;
    static constexpr auto prepend = GL_insert_before_first;
    static constexpr auto before = GL_insert_before;
    static constexpr auto after = GL_insert_after;
    static constexpr auto remove = GL_remove_item;
    static constexpr auto clear = GL_make_empty;
    static constexpr auto all = GL_all_items;
    static constexpr auto backwards = GL_all_items_reversed;
    static constexpr auto step = GL_next_item;
    static constexpr auto node_step = GL_next_position;
    using node = GL_node *;
    static GL_node *second(const GL_list &list) { return list.first->next; }
    static void *item_of(const GL_node *at) { return at->item; }
};
struct element_functions {
    static constexpr auto append = EL_append_after_last;
    static constexpr auto prepend = EL_insert_before_first;
    static constexpr auto before = EL_insert_before;
    static constexpr auto after = EL_insert_after;
    static constexpr auto remove = EL_remove_item;
    static void clear(EL_list *list)
    {
        const int closed = list->closed;
        EL_make_empty(list);
        if (closed)
            EL_set_closed(list);
    }
    static constexpr auto all = EL_all_items;
    static constexpr auto backwards = EL_all_items_reversed;
    static constexpr auto step = EL_next_item;
    static constexpr auto node_step = EL_next_position;
    using node = EL_node *;
    static EL_node *second(const EL_list &list) { return list.first->next; }
    static void *item_of(EL_node *at) { return EL_element(at); }
};
/* Records are their own positions. */
struct linked_functions {
    static constexpr auto append = SL_append_after_last;
    static void *prepend(SL_list *list, void *item) { return SL_insert_before_first(list, item), item; }
    static void *before(SL_list *list, void *at, void *item) { return SL_insert_before(list, at, item), item; }
    static void *after(SL_list *list, void *at, void *item) { return SL_insert_after(list, at, item), item; }
    static constexpr auto remove = SL_remove_item;
    static void clear(SL_list *list)
    {
        const int closed = list->closed;
        SL_make_empty(list, [](void **) {});
        if (closed)
            SL_set_closed(list);
    }
    static constexpr auto all = SL_all_items;
    static constexpr auto backwards = SL_all_items_reversed;
    static constexpr auto step = SL_next_item;
    static constexpr auto node_step = SL_next_item;
    using node = void *;
    static mova::links *second(const SL_list &list) { return static_cast<mova::links *>(list.first)->next; }
    static void *item_of(void *at) { return at; }
};

/* The same, as a position. */
template <class C, class List>
auto second_of(List &list)
{
    return typename List::position(C::second(*list.get()));
}

/* What all lists do. */
template <class List, class C>
void add_list(const char *name)
{
    using held = std::remove_pointer_t<typename List::value_type>;
    family{name}
        .once("append and clear", empty<List>, fill,
              [](auto &l, size_t count) {
                  for (size_t i = 0; i < count; ++i)
                      C::append(l.get(), argument<List>(i));
                  C::clear(l.get());
              })
        .each(
            "prepend, remove", full<List>, [](auto &l, size_t) { l.remove(l.prepend(value<List>(unlisted))); },
            [](auto &l, size_t) { C::remove(l.get(), C::prepend(l.get(), argument<List>(unlisted))); })
        .each(
            "insert before, remove", full<List>,
            [](auto &l, size_t) { l.remove(l.insert_before(second_of<C>(l), value<List>(unlisted))); },
            [](auto &l, size_t) {
                C::remove(l.get(), C::before(l.get(), C::second(*l.get()), argument<List>(unlisted)));
            })
        .each(
            "insert after, remove", full<List>,
            [](auto &l, size_t) { l.remove(l.insert_after(second_of<C>(l), value<List>(unlisted))); },
            [](auto &l, size_t) {
                C::remove(l.get(), C::after(l.get(), C::second(*l.get()), argument<List>(unlisted)));
            })
        .once("walk", full<List>, walk, c_walk<held, C::all, C::step>)
        .once("walk back", full<List>, walk_back, c_walk<held, C::backwards, C::step>)
        .once("walk by positions", full<List>, walk_positions, [](auto &l, size_t) {
            auto iterator = C::all(l.get());
            for (typename C::node at; C::node_step(&iterator, &at);)
                look(*static_cast<held *>(C::item_of(at)));
        });
}

constexpr auto is_odd = [](const item *each) { return (each - items.data()) % 2 != 0; };
constexpr GL_test is_odd_item = [](void *each) -> int { return is_odd(static_cast<item *>(each)); };

void add_pointer_list_edits()
{
    add_list<pointer_list, pointer_functions>("pointer list");
    family{"pointer list"}
        .each(
            "take, append", full<pointer_list>,
            [](auto &l, size_t) { l.append(l.take(pointer_list::position(l.get()->first))); },
            [](auto &l, size_t) {
                void *const taken = l.get()->first->item;
                GL_remove_item(l.get(), l.get()->first);
                GL_append_after_last(l.get(), taken);
            })
        .each(
            "replace", full<pointer_list>,
            [](auto &l, size_t i) { look(l.replace(pointer_list::position(l.get()->first), &items[i])); },
            [](auto &l, size_t i) {
                void *exchanged = &items[i];
                GL_swap_item(l.get()->first, &exchanged);
                look(static_cast<item *>(exchanged));
            })
        .each(
            "move to front", full<pointer_list>,
            [](auto &l, size_t) { l.move_to_front(pointer_list::position(l.get()->last)); },
            [](auto &l, size_t) { GL_move_before_first(l.get(), l.get()->last); })
        .each(
            "append a list", full<pointer_list>,
            [](auto &l, size_t) {
                pointer_list all;
                all.append(std::move(l));
                l = std::move(all);
            },
            [](auto &l, size_t) {
                GL_list *const all = GL_create();
                GL_list *moved = l.release();
                GL_append_list(all, &moved);
                l = pointer_list(all);
            });
}

void add_pointer_list_reads()
{
    family{"pointer list"}
        .once(
            "walk between two", full<pointer_list>,
            [](auto &l, size_t) {
                for (const item *each : l.between(l.begin(), std::prev(l.end())))
                    look(each);
            },
            [](auto &l, size_t) {
                GL_iterator iterator = GL_all_items_inbetween(l.get(), l.get()->first, l.get()->last, 1);
                for (void *each; GL_next_item(&iterator, &each);)
                    look(static_cast<item *>(each));
            })
        .once(
            "positions_if", full<pointer_list>,
            [](auto &l, size_t) {
                for (auto at : l.positions_if(is_odd))
                    look(*at);
            },
            [](auto &l, size_t) {
                GL_iterator iterator = GL_tested_items(l.get(), is_odd_item);
                for (GL_node *at; GL_next_position(&iterator, &at);)
                    look(static_cast<item *>(at->item));
            })
        .once(
            "remove_if, append", full<pointer_list>,
            [](auto &l, size_t count) {
                l.remove_if(is_odd);
                for (size_t i = 1; i < count; i += 2)
                    l.append(&items[i]);
            },
            [](auto &l, size_t count) {
                GL_iterator iterator = GL_tested_items(l.get(), is_odd_item);
                for (GL_node *at; GL_next_position(&iterator, &at);)
                    GL_remove_item(l.get(), at);
                for (size_t i = 1; i < count; i += 2)
                    GL_append_after_last(l.get(), &items[i]);
            })
        .once(
            "find the last", full<pointer_list>,
            [](auto &l, size_t count) { DoNotOptimize(l.find(&items[count - 1]).get()); },
            [](auto &l, size_t count) {
                GL_node *at;
                GL_find_item(l.get(), &items[count - 1], &at);
                DoNotOptimize(at);
            })
        .once(
            "insert_unique of the last", full<pointer_list>,
            [](auto &l, size_t count) { DoNotOptimize(l.insert_unique(&items[count - 1]).get()); },
            [](auto &l, size_t count) { DoNotOptimize(GL_insert_unique(l.get(), &items[count - 1])); })
        .once("copy", full<pointer_list>, copy, [](auto &l, size_t) {
            GL_list *made = GL_copy(l.get());
            GL_release(&made);
        });
}

/* What a list and a ring of elements have by the same names. */
template <class List>
void add_elements(const char *name)
{
    add_list<List, element_functions>(name);
    family{name}
        .once(
            "position_at, index_of", full<List>,
            [](auto &l, size_t count) { DoNotOptimize(l.index_of(l.position_at(static_cast<int32_t>(count / 2)))); },
            [](auto &l, size_t count) {
                DoNotOptimize(EL_get_index(l.get(), EL_get_pos_at_index(l.get(), static_cast<int32_t>(count / 2))));
            })
        .once("reverse", full<List>, reverse, call<EL_reverse>)
        .once("copy", full<List>, copy, [](auto &l, size_t) {
            EL_list *made = EL_total_copy(l.get());
            EL_release(&made);
        });
}

void add_element_list()
{
    add_elements<element_list>("element list");
    family{"element list"}
        .each(
            "close and open", full<element_list>, [](auto &l, size_t) { l = std::move(l).close().open(); },
            [](auto &l, size_t) {
                EL_set_closed(l.get());
                EL_reset_closed(l.get());
            })
        .once(
            "copy and remove, from to", full<element_list>,
            [](auto &l, size_t) {
                element_list made = l.copy(l.begin(), std::prev(l.end()));
                made.remove(made.begin(), std::prev(made.end()));
            },
            [](auto &l, size_t) {
                EL_list *made = EL_total_copy_inbetween(l.get(), l.get()->first, l.get()->last);
                EL_remove_items_inbetween(made, made->first, made->last);
                EL_release(&made);
            })
        .once(
            "replace by a list", pair_of<element_list>,
            [](auto &lists, size_t) {
                lists.first.replace(lists.first.begin(), std::prev(lists.first.end()), lists.second);
            },
            [](auto &lists, size_t) {
                EL_list *const to = lists.first.get();
                EL_replace_items_inbetween(to, to->first, to->last, lists.second.get(), sizeof(int64_t));
            })
        .once(
            "split and append", full<element_list>,
            [](auto &l, size_t) {
                l.append(l.split(std::prev(l.end())));
                l.remove(std::prev(l.end()));
            },
            [](auto &l, size_t) {
                EL_list *part = EL_remove_and_get_end_part(l.get(), l.get()->last);
                EL_append_list(l.get(), &part);
                EL_remove_item(l.get(), l.get()->last);
            });
}

void add_element_ring()
{
    add_elements<element_ring>("element ring");
    family{"element ring"}
        .each(
            "roll", full<element_ring>, [](auto &l, size_t) { l.roll(second_of<element_functions>(l)); },
            [](auto &l, size_t) { EL_roll(l.get(), l.get()->first->next); })
        .once(
            "walk around", full<element_ring>,
            [](auto &l, size_t count) {
                auto at = l.around().begin();
                for (size_t i = 0; i < count; ++i)
                    look(*at++);
            },
            [](auto &l, size_t count) {
                EL_node *at = l.get()->first;
                for (size_t i = 0; i < count; ++i, at = at->next)
                    look(*static_cast<int64_t *>(EL_element(at)));
            })
        .each(
            "cut and close", full<element_ring>,
            [](auto &l, size_t) {
                element_list open = std::move(l).open_at(second_of<element_functions>(l));
                open.remove(std::prev(open.end()));
                l = std::move(open).close();
            },
            [](auto &l, size_t) {
                EL_make_open_at_position(l.get(), l.get()->first->next);
                EL_remove_item(l.get(), l.get()->last);
                EL_set_closed(l.get());
            });
}

void add_element_stack()
{
    using element_stack = mova::element_stack<int64_t>;
    family{"element stack"}
        .once(
            "push and pop", empty<element_stack>,
            [](auto &stack, size_t count) {
                for (size_t i = 0; i < count; ++i)
                    stack.push(static_cast<int64_t>(i));
                while (const std::optional<int64_t> top = stack.pop())
                    look(*top);
            },
            [](auto &stack, size_t count) {
                for (size_t i = 0; i < count; ++i)
                    ES_push(stack.get(), argument<element_stack>(i));
                for (int64_t top; ES_pop(stack.get(), &top);)
                    look(top);
            })
        .each(
            "push, top and clear", empty<element_stack>,
            [](auto &stack, size_t i) {
                stack.push(static_cast<int64_t>(i));
                look(stack.top());
                stack.clear();
            },
            [](auto &stack, size_t i) {
                ES_push(stack.get(), argument<element_stack>(i));
                int64_t top = 0;
                ES_inspect_top(stack.get(), &top);
                look(top);
                ES_make_empty(stack.get());
            });
}

void add_double_list()
{
    using mova::double_list;
    family{"double list"}
        .once(
            "sort", full<double_list>, [](auto &l, size_t) { l.sort(); }, call<DBLL_sort>)
        .once(
            "thin_out", full<double_list>, [](auto &l, size_t) { l.thin_out(0.5); },
            [](auto &l, size_t) { DBLL_remove_double_occ(l.get(), 0.5); })
        .once(
            "insert_unique of the last", full<double_list>,
            [](auto &l, size_t count) { DoNotOptimize(l.insert_unique(static_cast<double>(count) - 1, 0.25)); },
            [](auto &l, size_t count) {
                DoNotOptimize(DBLL_add_double_unique(l.get(), static_cast<double>(count) - 1, 0.25));
            })
        .once(
            "nearest", full<double_list>,
            [](auto &l, size_t count) { DoNotOptimize(l.nearest(static_cast<double>(count) / 2, 1).index); },
            [](auto &l, size_t count) {
                double distance;
                DoNotOptimize(DBLL_find_index_of_nearest(l.get(), static_cast<double>(count) / 2, 1, &distance));
                DoNotOptimize(distance);
            })
        .once(
            "add_to_all", full<double_list>, [](auto &l, size_t) { l.add_to_all(1); },
            [](auto &l, size_t) { DBLL_add_to_all(l.get(), 1); });
}

/* What a list and a ring of records have by the same names. */
template <class List>
void add_linked(const char *name)
{
    add_list<List, linked_functions>(name);
    family{name}.once("reverse", full<List>, reverse, call<SL_reverse>);
}

void add_intrusive_lists()
{
    add_linked<linked_list>("intrusive list");
    add_linked<linked_ring>("intrusive ring");
    family{"intrusive list"}
        .each(
            "append a list", full<linked_list>,
            [](auto &l, size_t) {
                linked_list all;
                all.append(std::move(l));
                l = std::move(all);
            },
            [](auto &l, size_t) {
                SL_list *const all = SL_create();
                SL_list *moved = l.release();
                SL_append_list(all, &moved);
                l = linked_list(all);
            })
        .each(
            "close and open", full<linked_list>, [](auto &l, size_t) { l = std::move(l).close().open(); },
            [](auto &l, size_t) {
                SL_set_closed(l.get());
                SL_reset_closed(l.get());
            });
    family{"intrusive ring"}.each(
        "roll", full<linked_ring>, [](auto &l, size_t) { l.roll(second_of<linked_functions>(l)); },
        [](auto &l, size_t) { SL_roll(l.get(), static_cast<mova::links *>(l.get()->first)->next); });
}

/* ---- arrays ---- */

using dynamic_array = mova::dynamic_array<int64_t>;
using block_array = mova::block_array<int64_t>;

struct dynamic_functions {
    static void append(DA_array *a, const void *element) { DA_append(a, element, 1); }
    static constexpr auto clear = DA_reset;
    static constexpr auto get = DA_get_item;
    static constexpr auto size = DA_nitems;
    static void insert(DA_array *a, int32_t i, const void *element) { DA_insert(a, i, element, 1); }
    static void remove(DA_array *a, int32_t i) { DA_delete(a, i, 1); }
    static void copy(const DA_array *a) { DA_release(DA_copy(a)); }
    static constexpr auto assign = DA_copy_into;
    static constexpr auto roll = DA_roll;
    static constexpr auto reverse = DA_reverse;
};
struct block_functions {
    static constexpr auto append = GB_append_after_last;
    static constexpr auto clear = GB_make_empty;
    static void *get(GB_block *a, int32_t i) { return static_cast<int64_t *>(a->data) + i; }
    static constexpr auto size = GB_count_items;
    static constexpr auto insert = GB_insert_item;
    static constexpr auto remove = GB_remove_item;
    static void copy(const GB_block *a)
    {
        GB_block made;
        GB_copy(&made, a);
        GB_release(&made);
    }
    static constexpr auto assign = GB_copy_into;
    static constexpr auto roll = GB_roll;
    static constexpr auto reverse = GB_reverse;
};

/* Block arrays are rolled as rings. */
constexpr auto ring_of = []<class Array>(Array made) {
    if constexpr (std::is_same_v<Array, block_array>)
        made.close();
    return made;
};
template <class Array>
constexpr auto ring = [](size_t count) { return ring_of(full<Array>(count)); };

/* What both arrays do. Those that are filled keep their storage. */
template <class Array, class C>
void add_array(const char *name)
{
    family{name}
        .once(
            "append and clear", full<Array>,
            [](auto &a, size_t count) {
                a.clear();
                for (size_t i = 0; i < count; ++i)
                    a.append(static_cast<int64_t>(i));
            },
            [](auto &a, size_t count) {
                C::clear(a.get());
                for (size_t i = 0; i < count; ++i)
                    C::append(a.get(), argument<Array>(i));
            })
        .each(
            "[]", full<Array>, [](auto &a, size_t i) { look(a[i]); },
            [](auto &a, size_t i) { look(*static_cast<int64_t *>(C::get(a.get(), static_cast<int32_t>(i)))); })
        .each(
            "insert, remove at the end", full<Array>,
            [](auto &a, size_t i) {
                a.insert(a.size(), static_cast<int64_t>(i));
                a.remove(a.size() - 1);
            },
            [](auto &a, size_t i) {
                C::insert(a.get(), C::size(a.get()), argument<Array>(i));
                C::remove(a.get(), C::size(a.get()) - 1);
            })
        .once(
            "insert, remove at the front", full<Array>,
            [](auto &a, size_t) {
                a.insert(0, 1);
                a.remove(0);
            },
            [](auto &a, size_t) {
                C::insert(a.get(), 0, argument<Array>(1));
                C::remove(a.get(), 0);
            })
        .once("copy", full<Array>, copy, call<C::copy>)
        .once("assign", pair_of<Array>, assign,
              [](auto &arrays, size_t) { C::assign(arrays.first.get(), arrays.second.get()); })
        .once("roll", ring<Array>, roll_by_one, call<C::roll, 1>)
        .once("reverse", full<Array>, reverse, call<C::reverse>);
}

void add_dynamic_array()
{
    add_array<dynamic_array, dynamic_functions>("dynamic array");
    family{"dynamic array"}
        .once("walk", full<dynamic_array>, walk, c_walk<int64_t, DA_all_items, DA_next>)
        .once("walk by positions", full<dynamic_array>, walk_positions, c_walk<int64_t, DA_all_items, DA_next>)
        .once(
            "append from empty", empty<dynamic_array>,
            [](auto &a, size_t count) {
                for (size_t i = 0; i < count; ++i)
                    a.append(static_cast<int64_t>(i));
                a.clear_storage();
            },
            [](auto &a, size_t count) {
                for (size_t i = 0; i < count; ++i)
                    DA_append(a.get(), argument<dynamic_array>(i), 1);
                DA_clear(a.get());
            })
        .once(
            "append a span, truncate", pair_of<dynamic_array>,
            [](auto &arrays, size_t count) {
                arrays.first.append(std::span<const int64_t>(arrays.second));
                arrays.first.truncate(count);
            },
            [](auto &arrays, size_t count) {
                const DA_array *const from = arrays.second.get();
                DA_append(arrays.first.get(), DA_data(from), DA_nitems(from));
                DA_truncate(arrays.first.get(), static_cast<int32_t>(count));
            })
        .each(
            "resize, longer and shorter", full<dynamic_array>,
            [](auto &a, size_t) {
                a.resize(a.size() + 1);
                a.resize(a.size() - 1);
            },
            [](auto &a, size_t) {
                DA_setsize(a.get(), DA_nitems(a.get()) + 1);
                DA_setsize(a.get(), DA_nitems(a.get()) - 1);
            })
        .once(
            "reserve, clear_storage", empty<dynamic_array>,
            [](auto &a, size_t count) {
                a.reserve(count);
                a.clear_storage();
            },
            [](auto &a, size_t count) {
                DA_extend(a.get(), static_cast<int32_t>(count));
                DA_clear(a.get());
            })
        .each(
            "grow_to", full<dynamic_array>, [](auto &a, size_t i) { look(a.grow_to(i)); },
            [](auto &a, size_t i) { look(*static_cast<int64_t *>(DA_get_item(a.get(), static_cast<int32_t>(i)))); })
        .once(
            "==", pair_of<dynamic_array>, [](auto &arrays, size_t) { DoNotOptimize(arrays.first == arrays.second); },
            [](auto &arrays, size_t) { DoNotOptimize(DA_equal(arrays.first.get(), arrays.second.get())); });
}

void add_block_array()
{
    add_array<block_array, block_functions>("block array");
    family{"block array"}
        .each(
            "append, remove_last", full<block_array>,
            [](auto &a, size_t i) {
                a.append(static_cast<int64_t>(i));
                a.remove_last();
            },
            [](auto &a, size_t i) {
                GB_append_after_last(a.get(), argument<block_array>(i));
                GB_remove_last_item(a.get());
            })
        .once(
            "set_capacity", full<block_array>,
            [](auto &a, size_t count) {
                a.set_capacity(2 * count);
                a.set_capacity(count);
            },
            [](auto &a, size_t count) {
                GB_set_number_of_elements(a.get(), static_cast<int32_t>(2 * count));
                GB_set_number_of_elements(a.get(), static_cast<int32_t>(count));
            })
        .once(
            "split and append", full<block_array>,
            [](auto &a, size_t count) {
                a.append(a.split(count / 2));
                a.remove_last();
            },
            [](auto &a, size_t count) {
                GB_block part;
                GB_remove_and_get_end_part(&part, a.get(), static_cast<int32_t>(count / 2));
                GB_append_block(a.get(), &part);
                GB_remove_last_item(a.get());
            });
}

void add_block_ring()
{
    family{"block array"}
        .once(
            "cut and close", ring<block_array>,
            [](auto &a, size_t count) {
                a.open_at(count / 2);
                a.remove_last();
                a.close();
            },
            [](auto &a, size_t count) {
                GB_make_open_at_position(a.get(), static_cast<int32_t>(count / 2));
                GB_remove_last_item(a.get());
                GB_set_closed(a.get());
            })
        .once(
            "walk around", ring<block_array>,
            [](auto &a, size_t count) {
                auto at = a.around().begin();
                for (size_t i = 0; i < count; ++i)
                    look(*at++);
            },
            [](auto &a, size_t count) {
                int32_t at = 0;
                for (size_t i = 0; i < count; ++i, at = GB_advance(a.get(), at, 1))
                    look(*static_cast<int64_t *>(block_functions::get(a.get(), at)));
            })
        .each(
            "advance", ring<block_array>,
            [](auto &a, size_t i) { DoNotOptimize(a.advance(static_cast<int32_t>(i), 1)); },
            [](auto &a, size_t i) { DoNotOptimize(GB_advance(a.get(), static_cast<int32_t>(i), 1)); });
}

/* ---- sorted numbers, ids ---- */

constexpr auto sorted = [](size_t count) {
    mova::sorted_numbers made;
    for (size_t i = 0; i < count; ++i)
        made.add(static_cast<int32_t>(2 * i));
    return made;
};

void add_sorted_numbers()
{
    family{"sorted numbers"}
        .once(
            "add, remove in the middle", sorted,
            [](auto &numbers, size_t count) {
                numbers.add(static_cast<int32_t>(count | 1));
                numbers.remove(static_cast<int32_t>(count | 1));
            },
            [](auto &numbers, size_t count) {
                SA_add_number(numbers.get(), static_cast<int32_t>(count | 1));
                SA_remove_number(numbers.get(), static_cast<int32_t>(count | 1));
            })
        .each(
            "contains", sorted,
            [](auto &numbers, size_t i) { DoNotOptimize(numbers.contains(static_cast<int32_t>(i))); },
            [](auto &numbers, size_t i) { DoNotOptimize(SA_check_number(numbers.get(), static_cast<int32_t>(i))); })
        .once(
            "companion inserted, removed", sorted,
            [](auto &numbers, size_t) {
                numbers.companion_inserted(1);
                numbers.companion_removed(1);
            },
            [](auto &numbers, size_t) {
                SA_adapt_for_insert(numbers.get(), 1);
                SA_adapt_for_remove(numbers.get(), 1);
            })
        .once(
            "companion reversed, rolled", sorted,
            [](auto &numbers, size_t count) {
                numbers.companion_reversed(static_cast<int32_t>(2 * count));
                numbers.companion_rolled(1, static_cast<int32_t>(2 * count));
            },
            [](auto &numbers, size_t count) {
                SA_adapt_for_reverse(numbers.get(), static_cast<int32_t>(2 * count));
                SA_adapt_for_roll(numbers.get(), 1, static_cast<int32_t>(2 * count));
            })
        .once("walk", sorted, walk, c_walk<int32_t, DA_all_items, DA_next>);
}

using id_table = mova::id_table<item>;
constexpr auto ids = [](size_t count) {
    id_table made;
    made.allow_reuse();
    for (size_t i = 0; i < count; ++i)
        made.add(&items[i]);
    return made;
};

void add_id_table()
{
    family{"id table"}
        .once(
            "add", empty<std::optional<id_table>>,
            [](auto &table, size_t count) {
                table.emplace();
                for (size_t i = 0; i < count; ++i)
                    table->add(&items[i]);
            },
            [](auto &table, size_t count) {
                table.emplace();
                for (size_t i = 0; i < count; ++i)
                    io_lut_add(table->get(), &items[i]);
            })
        .each(
            "find", ids, [](auto &table, size_t i) { DoNotOptimize(table.find(static_cast<int32_t>(i + 1))); },
            [](auto &table, size_t i) { DoNotOptimize(io_lut_look_ptr(table.get(), static_cast<int32_t>(i + 1))); })
        .each(
            "[]", ids, [](auto &table, size_t i) { DoNotOptimize(&table[static_cast<int32_t>(i + 1)]); },
            [](auto &table, size_t i) { DoNotOptimize(io_lut_get_ptr(table.get(), static_cast<int32_t>(i + 1))); })
        .each(
            "set", ids, [](auto &table, size_t i) { table.set(static_cast<int32_t>(i + 1), &items[i]); },
            [](auto &table, size_t i) { io_lut_set(table.get(), &items[i], static_cast<int32_t>(i + 1)); })
        .once(
            "id_of the last", ids, [](auto &table, size_t count) { DoNotOptimize(table.id_of(&items[count - 1])); },
            [](auto &table, size_t count) { DoNotOptimize(io_lut_look_id(table.get(), &items[count - 1])); })
        .once("walk", ids, walk, [](auto &table, size_t) {
            io_lut_iterator iterator = io_lut_all_items(table.get());
            while (void *each = io_lut_next_item(&iterator))
                look(static_cast<item *>(each));
        });
}

/* ---- hash table and pointer lookup: every second key that is asked for is absent ---- */

struct keyed_words {
    std::vector<int64_t> keys;
    mova::hash_table<int64_t, int64_t> table;
    mova::pointer_lookup<int64_t, int64_t> lookup;
};
constexpr auto hashed = [](size_t count) {
    keyed_words made;
    std::mt19937_64 random(1);
    for (size_t i = 0; i < count; ++i)
        made.keys.push_back(static_cast<int64_t>(random() | 1));
    for (size_t i = 0; i < count; i += 2) {
        made.table.set(made.keys[i], made.keys[i]);
        made.lookup.add(made.keys[i], made.keys[i]);
    }
    return made;
};

void add_hash_table()
{
    family{"hash table"}
        .each(
            "get_or", hashed, [](auto &made, size_t i) { DoNotOptimize(made.table.get_or(made.keys[i])); },
            [](auto &made, size_t i) { DoNotOptimize(HSH_get_value(made.table.get(), made.keys[i])); })
        .each(
            "find", hashed,
            [](auto &made, size_t i) {
                if (const std::optional<int64_t> found = made.table.find(made.keys[i]))
                    DoNotOptimize(*found);
            },
            [](auto &made, size_t i) {
                if (HSH_contains_key(made.table.get(), made.keys[i]))
                    DoNotOptimize(HSH_get_value(made.table.get(), made.keys[i]));
            })
        .each(
            "contains", hashed, [](auto &made, size_t i) { DoNotOptimize(made.table.contains(made.keys[i])); },
            [](auto &made, size_t i) { DoNotOptimize(HSH_contains_key(made.table.get(), made.keys[i])); })
        .each(
            "set and remove", hashed,
            [](auto &made, size_t i) {
                made.table.set(made.keys[i | 1], 1);
                DoNotOptimize(made.table.remove(made.keys[i | 1]));
            },
            [](auto &made, size_t i) {
                HSH_set_value(made.table.get(), made.keys[i | 1], 1);
                DoNotOptimize(HSH_remove_entry(made.table.get(), made.keys[i | 1]));
            })
        .once(
            "fill", hashed,
            [](auto &made, size_t) {
                mova::hash_table<int64_t, int64_t> table;
                for (const int64_t key : made.keys)
                    table.set(key, key);
            },
            [](auto &made, size_t) {
                HSH_table *table = HSH_create(0, 0);
                for (const int64_t key : made.keys)
                    HSH_set_value(table, key, key);
                HSH_release(&table);
            })
        .once(
            "walk", hashed,
            [](auto &made, size_t) {
                for (const auto &[key, value] : made.table)
                    DoNotOptimize(key + value);
            },
            [](auto &made, size_t) {
                HSH_iterator iterator = HSH_all_entries(made.table.get());
                for (mova_word key, value; HSH_next(&iterator, &key, &value);)
                    DoNotOptimize(key + value);
            });
}

void add_pointer_lookup()
{
    family{"pointer lookup"}
        .each(
            "find", hashed, [](auto &made, size_t i) { DoNotOptimize(made.lookup.find(made.keys[i])); },
            [](auto &made, size_t i) { DoNotOptimize(mova_lu_get(made.lookup.get(), made.keys[i])); })
        .each(
            "add, find, remove", hashed,
            [](auto &made, size_t i) {
                made.lookup.add(made.keys[i | 1], 1);
                DoNotOptimize(made.lookup.find(made.keys[i | 1]));
                made.lookup.remove(made.keys[i | 1]);
            },
            [](auto &made, size_t i) {
                mova_lu_add(made.lookup.get(), made.keys[i | 1], 1);
                DoNotOptimize(mova_lu_get(made.lookup.get(), made.keys[i | 1]));
                mova_lu_remove(made.lookup.get(), made.keys[i | 1]);
            });
}

/* ---- swap cache and its pool ---- */

struct tile {
    std::size_t body_size() const { return 64; }
    void fill(std::span<char> body) { std::ranges::fill(body, 'x'); }
};
using tile_cache = mova::swap_cache<tile, char>;

/* In the pool is room for all. */
struct filled_cache {
    explicit filled_cache(size_t count) : tiles(count)
    {
        for (tile &each : tiles) {
            entries.push_back(cache.insert(each));
            cache.body(entries.back());
        }
    }
    std::vector<tile> tiles;
    mova::block_pool pool{1 << 24};
    tile_cache cache{pool.get()};
    std::vector<tile_cache::position> entries;
};
constexpr auto cached = [](size_t count) { return filled_cache(count); };

cc_entry *insert_by_c(cc_cache *cache, tile &each)
{
    return cc_insert(
        cache, &each, 0, [](void *item) { return static_cast<uint32_t>(static_cast<tile *>(item)->body_size()); },
        [](void *item, void *block, uint32_t size) {
            static_cast<tile *>(item)->fill({static_cast<char *>(block), size});
        },
        [](void *, void *) {}, [](void *) {});
}

void add_swap_cache()
{
    family{"swap cache"}
        .each(
            "body in memory", cached,
            [](auto &made, size_t i) { DoNotOptimize(made.cache.body(made.entries[i]).data()); },
            [](auto &made, size_t i) { DoNotOptimize(cc_get(made.cache.get(), made.entries[i].get())); })
        .each(
            "body fetched, swap_out", cached,
            [](auto &made, size_t i) {
                DoNotOptimize(made.cache.body(made.entries[i]).data());
                made.cache.swap_out(made.entries[i]);
            },
            [](auto &made, size_t i) {
                DoNotOptimize(cc_get(made.cache.get(), made.entries[i].get()));
                cc_swap_out(made.cache.get(), made.entries[i].get());
            })
        .each(
            "insert, remove", cached, [](auto &made, size_t i) { made.cache.remove(made.cache.insert(made.tiles[i])); },
            [](auto &made, size_t i) {
                cc_entry *entry = insert_by_c(made.cache.get(), made.tiles[i]);
                cc_remove(made.cache.get(), &entry);
            })
        .each(
            "let_go_next", cached, [](auto &made, size_t i) { made.cache.let_go_next(made.entries[i]); },
            [](auto &made, size_t i) { cc_lazy_swap_out(made.cache.get(), made.entries[i].get()); })
        .each(
            "alloc, at, free", cached,
            [](auto &made, size_t) {
                mb_handle block = made.cache.alloc(64);
                DoNotOptimize(made.cache.at(block));
                made.cache.free(block);
            },
            [](auto &made, size_t) {
                mb_handle block = cc_alloc(made.cache.get(), 64);
                DoNotOptimize(mb_get(made.pool.get(), block));
                cc_free(made.cache.get(), &block);
            })
        .once(
            "walk", cached,
            [](auto &made, size_t) {
                for (const tile &each : made.cache)
                    DoNotOptimize(&each);
            },
            [](auto &made, size_t) {
                for (const cc_entry *at = made.cache.get()->first; at; at = at->next)
                    DoNotOptimize(at->item);
            });
    family{"block pool"}.each(
        "alloc, elements, free", cached,
        [](auto &made, size_t) {
            mb_handle block = made.pool.template alloc<int64_t>(8);
            DoNotOptimize(made.pool.template elements<int64_t>(block, 8).data());
            made.pool.free(block);
        },
        [](auto &made, size_t) {
            mb_handle block = mb_alloc(made.pool.get(), 8 * sizeof(int64_t));
            DoNotOptimize(mb_get(made.pool.get(), block));
            mb_free(made.pool.get(), &block);
        });
}

/* ---- colour table, of which there is one ---- */

constexpr auto colours = [](size_t) {
    static const bool made = (mova::colour_table::make(256), true);
    return made;
};
int32_t fixed_index(size_t i)
{
    return static_cast<int32_t>(i % 8);
}

void add_colour_table()
{
    const family table = {"colour table", {{1000, "1e3"}}};
    table
        .each(
            "get", colours, [](auto &, size_t i) { DoNotOptimize(mova::colour_table::get(fixed_index(i)).red); },
            [](auto &, size_t i) {
                int16_t red, green, blue;
                CLUT_get(fixed_index(i), &red, &green, &blue);
                DoNotOptimize(red);
            })
        .each(
            "set", colours,
            [](auto &, size_t i) {
                mova::colour_table::set(fixed_index(i), {1, 2, 3});
            },
            [](auto &, size_t i) { CLUT_set(fixed_index(i), 1, 2, 3); })
        .each(
            "copy", colours, [](auto &, size_t i) { mova::colour_table::copy(fixed_index(i), 8); },
            [](auto &, size_t i) { CLUT_copy(fixed_index(i), 8); })
        .each(
            "take an index, give it back", colours,
            [](auto &, size_t) {
                mova::dynamic_colour({1, 2, 3});
            },
            [](auto &, size_t) {
                const int32_t index = CLUT_new_index();
                CLUT_set(index, 1, 2, 3);
                CLUT_release_index(index);
            });
}

/* ---- what the tree has besides insertion, search, removal and walks, which have their rows beside other trees ---- */

struct record {
    int32_t key;
};
struct by_key {
    auto operator()(const record &a, const record &b) const { return a.key <=> b.key; }
};
struct ordered {
    std::vector<record> records, sorted;
    mova::balanced_set<record, by_key> tree;
};
constexpr auto in_order = [](size_t count) {
    ordered made;
    for (size_t i = 0; i < count; ++i) {
        made.sorted.push_back({static_cast<int32_t>(i)});
        made.records.push_back({static_cast<int32_t>(i * 7919 % 100003)});
    }
    for (record &each : made.records)
        made.tree.insert(each);
    return made;
};

void add_tree()
{
    family{"tree"}
        .each(
            "find_item", in_order,
            [](auto &made, size_t i) { DoNotOptimize(made.tree.find_item(made.records[i]).get()); },
            [](auto &made, size_t i) {
                GT_tree_item *at;
                GT_find_item(made.tree.get(), &made.records[i], &at);
                DoNotOptimize(at);
            })
        .each(
            "take_item, insert", in_order,
            [](auto &made, size_t i) { made.tree.insert(made.tree.take_item(made.records[i])); },
            [](auto &made, size_t i) {
                GT_find_and_remove_item(made.tree.get(), &made.records[i]);
                GT_insert_item(made.tree.get(), &made.records[i]);
            })
        .each(
            "take_first, insert by C", in_order,
            [](auto &made, size_t) { GT_insert_item(made.tree.get(), &made.tree.take_first()); },
            [](auto &made, size_t) {
                void *const first = made.tree.get()->first->item;
                GT_remove_first_item(made.tree.get());
                GT_insert_item(made.tree.get(), first);
            })
        .once(
            "insert in order, clear", in_order,
            [](auto &made, size_t) {
                mova::balanced_set<record, by_key> tree;
                for (record &each : made.sorted)
                    tree.insert(each);
            },
            [](auto &made, size_t) {
                mova::balanced_set<record, by_key> tree;
                for (record &each : made.sorted)
                    GT_insert_item(tree.get(), &each);
            })
        .once(
            "cursor", in_order,
            [](auto &made, size_t) {
                for (const auto at : made.tree.positions())
                    DoNotOptimize(at.get());
            },
            [](auto &made, size_t) {
                GT_tree_iter *iterator = GT_all_items(made.tree.get());
                for (GT_tree_item *at; GT_next_position(iterator, &at);)
                    DoNotOptimize(at);
            })
        .once(
            "count_items", in_order, [](auto &made, size_t) { DoNotOptimize(made.tree.count_items()); },
            [](auto &made, size_t) { DoNotOptimize(GT_count_items(made.tree.get())); })
        .once(
            "sort what is in order", in_order, [](auto &made, size_t) { made.tree.sort(); },
            [](auto &made, size_t) { GT_sort(made.tree.get()); });
}

const bool registered = [] {
    for (void (*add)() :
         {add_pointer_list_edits, add_pointer_list_reads, add_element_list, add_element_ring, add_element_stack,
          add_double_list, add_intrusive_lists, add_dynamic_array, add_block_array, add_block_ring, add_sorted_numbers,
          add_id_table, add_hash_table, add_pointer_lookup, add_swap_cache, add_colour_table, add_tree})
        add();
    return true;
}();

} // namespace
