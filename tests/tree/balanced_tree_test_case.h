/* SPDX-License-Identifier: MIT */
/* What the tests of the balanced tree share: records with a key, a comparison that writes down what it is asked, and
   trees as text. */
#ifndef MOVA_TESTS_TREE_BALANCED_TREE_TEST_CASE_H
#define MOVA_TESTS_TREE_BALANCED_TREE_TEST_CASE_H

#include <mova/frame/internal/module_records.h>
#include <mova/tree/balanced_tree.h>
#include <mova/tree/internal/invariants.h>

#include <tests/support/recording_host_test_case.h>

#include <deque>
#include <string>

namespace mova::test {

struct record {
    int32_t key;
    std::string name;
};

inline int32_t compare_keys(void *a, void *b)
{
    const int32_t left = static_cast<record *>(a)->key, right = static_cast<record *>(b)->key;
    return left < right ? -7 : left > right ? 9 : 0;
}

inline const std::string &name_of(const void *item)
{
    return static_cast<const record *>(item)->name;
}

/* As compare_keys, and writes down "compare A B". */
inline int32_t recorded_compare(void *a, void *b)
{
    recording_host::get().write_down("compare " + name_of(a) + " " + name_of(b));
    return compare_keys(a, b);
}

inline void append_text(const tree_item *node, std::string &text)
{
    if (!node) {
        text += ".";
        return;
    }
    const bool leaf = !node->left && !node->right;
    const char *sign = node->balance < 0 ? "-" : node->balance > 0 ? "+" : "";
    if (!leaf) {
        text += "(";
        append_text(node->left, text);
        text += " ";
    }
    text += name_of(node->item) + sign;
    if (!leaf) {
        text += " ";
        append_text(node->right, text);
        text += ")";
    }
}

class balanced_tree_test_case : public recording_host_test_case {
protected:
    void SetUp() override
    {
        recording_host_test_case::SetUp();
        counters_before = counters();
        t = GT_create_with_dupl_not_allowed(recorded_compare);
        host.take_log();
    }

    void TearDown() override
    {
        if (t)
            GT_release(&t);
        EXPECT_EQ(counters(), counters_before);
        recording_host_test_case::TearDown();
    }

    static std::vector<int32_t> counters()
    {
        const auto &record = modules.gentree;
        return {record.live_trees, record.live_nodes, record.live_iterators};
    }

    /* How many more trees, nodes and iterators there are than when the test began. */
    std::vector<int32_t> counted() const
    {
        std::vector<int32_t> more = counters();
        for (std::size_t i = 0; i < more.size(); ++i)
            more[i] -= counters_before[i];
        return more;
    }

    /* Gives the test a tree that allows duplicates instead. */
    void allow_duplicates()
    {
        GT_release(&t);
        t = GT_create_with_dupl_allowed(recorded_compare);
        host.take_log();
    }

    record *make(int32_t key, const std::string &name) { return &records.emplace_back(record{key, name}); }
    record *make(int32_t key) { return make(key, std::to_string(key)); }

    tree_item *insert(int32_t key) { return GT_insert_item(t, make(key)); }
    tree_item *insert(int32_t key, const std::string &name) { return GT_insert_item(t, make(key, name)); }

    void insert_all(std::initializer_list<int32_t> keys)
    {
        for (int32_t key : keys)
            insert(key);
        host.take_log();
    }

    /* The first node in the chain with this name. */
    tree_item *at(const std::string &name) const
    {
        tree_item *node = t->first;
        while (name_of(node->item) != name)
            node = node->next;
        return node;
    }
    tree_item *at(int32_t key) const { return at(std::to_string(key)); }

    /* The tree: "(1 2 3)" is a node 2 with two leaves, "(1 2- .)" one without a right child. A sign after a name says
       where its node is higher. Verifies the invariants. */
    std::string shape() const
    {
        EXPECT_EQ(broken_invariant(*t, compare_keys), 0);
        return unverified_shape();
    }

    std::string unverified_shape() const
    {
        std::string text;
        append_text(t->root, text);
        return text;
    }

    /* The names along the chain. */
    std::string order() const
    {
        EXPECT_EQ(mova::broken_chain_invariant(*t), 0);
        std::string names;
        for (const tree_item *node = t->first; node; node = node->next)
            names += (names.empty() ? "" : " ") + name_of(node->item);
        return names;
    }

    template <class Call>
    void expect_raise(int32_t line, Call call)
    {
        mova::test::expect_raise("gentree", line, 4297, call);
    }

    /* Takes the log, and of it the lines that begin with `first_word`. */
    log taken(const std::string &first_word)
    {
        log lines;
        for (std::string &line : host.take_log()) {
            if (line.rfind(first_word + " ", 0) == 0)
                lines.push_back(std::move(line));
        }
        return lines;
    }

    std::deque<record> records;
    tree *t = nullptr;
    std::vector<int32_t> counters_before;
};

inline const std::string tree_bytes = std::to_string(sizeof(tree));
inline const std::string node_bytes = std::to_string(sizeof(tree_item));
inline const std::string iterator_bytes = std::to_string(sizeof(tree_iter));
inline const std::string list_bytes = std::to_string(sizeof(GL_list));
inline const std::string list_node_bytes = std::to_string(sizeof(GL_node));

} // namespace mova::test

#endif
