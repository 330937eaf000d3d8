/* SPDX-License-Identifier: MIT */
/* The simple list beside other intrusive lists: Boost's, the macros of utlist and those of BSD. All are compiled into the
   caller, as their headers have it. */

#include <string>
#include <vector>

#include <sys/queue.h>

#include <boost/intrusive/list.hpp>
#include <utlist.h>

#include <bench/growth.h>
#include <bench/scoreboard.h>
#include <mova/lists/simple_list.h>

namespace {

using benchmark::DoNotOptimize;

constexpr size_t item_count = 100000;

/* Each list has records of its own kind, in one array: links, and as much of the caller's own as fills four words. */
struct mova_list {
    struct record {
        record *prev, *next;
        size_t number, more;
    };
    SL_list *list = SL_create();

    ~mova_list() { SL_release(&list); }
    void append(record &item) { SL_append_after_last(list, &item); }
    void remove(record &item) { SL_remove_item(list, &item); }

    template <class Visit>
    void walk(Visit visit)
    {
        SL_iterator iterator = SL_all_items(list);
        for (void *item; SL_next_item(&iterator, &item);)
            visit(*static_cast<record *>(item));
    }
};

/* The same list, edited by calls, as of the shared library. */
struct called_mova_list : mova_list {
    void (*volatile append_call)(SL_list *, void *) = SL_append_after_last;
    void (*volatile remove_call)(SL_list *, void *) = SL_remove_item;

    void append(record &item) { append_call(list, &item); }
    void remove(record &item) { remove_call(list, &item); }
};

/* With its usual hook, which clears the links of what is removed, as ours does. */
struct boost_list {
    struct record : boost::intrusive::list_base_hook<> {
        size_t number, more;
    };
    boost::intrusive::list<record> list;

    void append(record &item) { list.push_back(item); }
    void remove(record &item) { list.erase(list.iterator_to(item)); }

    template <class Visit>
    void walk(Visit visit)
    {
        for (record &item : list)
            visit(item);
    }
};

struct ut_list {
    struct record {
        record *prev, *next;
        size_t number, more;
    };
    record *head = nullptr;

    void append(record &item)
    {
        record *added = &item;
        DL_APPEND(head, added);
    }
    void remove(record &item)
    {
        record *removed = &item;
        DL_DELETE(head, removed);
    }

    template <class Visit>
    void walk(Visit visit)
    {
        record *item;
        DL_FOREACH(head, item)
        {
            visit(*item);
        }
    }
};

struct bsd_list {
    struct record {
        TAILQ_ENTRY(record) links;
        size_t number, more;
    };
    TAILQ_HEAD(list_head, record) head;

    bsd_list() { TAILQ_INIT(&head); }
    void append(record &item) { TAILQ_INSERT_TAIL(&head, &item, links); }
    void remove(record &item) { TAILQ_REMOVE(&head, &item, links); }

    template <class Visit>
    void walk(Visit visit)
    {
        record *item;
        TAILQ_FOREACH(item, &head, links)
        {
            visit(*item);
        }
    }
};

template <class List>
std::vector<typename List::record> numbered_records(size_t count = item_count)
{
    std::vector<typename List::record> records(count);
    for (size_t i = 0; i < count; ++i)
        records[i].number = i;
    return records;
}

/* Appends every record, and removes them again, oldest first. */
template <class List>
void append_and_remove(benchmark::State &state)
{
    auto records = numbered_records<List>();
    List list;
    for (auto _ : state) {
        for (auto &record : records)
            list.append(record);
        for (auto &record : records)
            list.remove(record);
    }
}

template <class List>
void walk(benchmark::State &state)
{
    auto records = numbered_records<List>();
    List list;
    for (auto &record : records)
        list.append(record);
    for (auto _ : state) {
        size_t sum = 0;
        list.walk([&sum](const auto &record) { sum += record.number; });
        DoNotOptimize(sum);
    }
    for (auto &record : records)
        list.remove(record);
}

/* Appends every record, walks the list and removes the records. */
template <class List>
void append_walk_and_remove(benchmark::State &state)
{
    auto records = numbered_records<List>();
    List list;
    for (auto _ : state) {
        size_t sum = 0;
        for (auto &record : records)
            list.append(record);
        list.walk([&sum](const auto &record) { sum += record.number; });
        DoNotOptimize(sum);
        for (auto &record : records)
            list.remove(record);
    }
}

template <class List>
void live(growth::life &of)
{
    auto records = numbered_records<List>(of.items());
    List list;
    of.once("append", of.items(), [&] {
        for (auto &record : records)
            list.append(record);
    });
    of.repeat("walk", of.items(), [&] {
        size_t sum = 0;
        list.walk([&sum](const auto &record) { sum += record.number; });
        DoNotOptimize(sum);
    });
    of.once("remove", of.items(), [&] {
        for (auto &record : records)
            list.remove(record);
    });
}

using work = void (*)(benchmark::State &);

void add(const std::string &workload, work ours, const std::vector<scoreboard::timed_peer> &peers)
{
    scoreboard::add_timed(
        {"L6", "simple list: " + workload + ", 1e5 items", static_cast<double>(item_count), ours, peers});
}

const bool registered = [] {
    add("append, walk, remove", append_walk_and_remove<mova_list>,
        {{"boost", append_walk_and_remove<boost_list>, 1.2},
         {"utlist", append_walk_and_remove<ut_list>, 0.95},
         {"TAILQ", append_walk_and_remove<bsd_list>, 0.95},
         {"own calls", append_walk_and_remove<called_mova_list>, 0}});
    add("walk", walk<mova_list>,
        {{"boost", walk<boost_list>, 0}, {"utlist", walk<ut_list>, 0}, {"TAILQ", walk<bsd_list>, 0}});
    add("append, remove", append_and_remove<mova_list>,
        {{"boost", append_and_remove<boost_list>, 0},
         {"utlist", append_and_remove<ut_list>, 0},
         {"TAILQ", append_and_remove<bsd_list>, 0},
         {"own calls", append_and_remove<called_mova_list>, 0}});
    growth::add("simple_list", {{"mova", live<mova_list>, 1e8},
                                {"boost", live<boost_list>, 1e8},
                                {"utlist", live<ut_list>, 1e8},
                                {"TAILQ", live<bsd_list>, 1e8}});
    return true;
}();

} // namespace
