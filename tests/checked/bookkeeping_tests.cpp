/* SPDX-License-Identifier: MIT */
/* What the checked library spends on a node or a block that lives: never more than 96 bytes. */
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <vector>

#include <gtest/gtest.h>

#include <mova/checked/internal/registry.h>
#include <mova/lists/double_list.h>
#include <mova/lists/element_list.h>
#include <mova/lists/element_stack.h>
#include <mova/lists/generic_list.h>
#include <mova/lists/simple_list.h>
#include <mova/tree/balanced_tree.h>

namespace {

constexpr int most = 20000;

/* What the checks and the checked host know now, in bytes. */
size_t bytes_known()
{
    return mova::checked::registry_bytes() + mova_checked_block_bytes();
}

struct item {
    void *next, *previous;
    int number;
};
item items[most];

int32_t by_number(void *a, void *b)
{
    return static_cast<item *>(a)->number - static_cast<item *>(b)->number;
}

void leave(void **)
{
}

/* Adds the nth to whatever is filled. */
struct filled {
    const char *name;
    void (*begin)();
    void (*add)(int nth);
    void (*end)();
};

GL_list *pointers;
EL_list *elements;
ES_stack *stack;
EL_list *doubles;
SL_list *linked;
GT_tree *tree;
std::vector<void *> blocks;

template <size_t Size>
constexpr filled blocks_of(const char *name)
{
    return {name, [] {}, [](int) { blocks.push_back(MM_alloc_item(Size)); },
            [] {
                for (void *const block : blocks)
                    MM_dealloc_item(block, Size);
                blocks.clear();
            }};
}

const filled all[] = {
    {"GL", [] { pointers = GL_create(); }, [](int nth) { GL_append_after_last(pointers, &items[nth]); },
     [] { GL_release(&pointers); }},
    {"EL", [] { elements = EL_create(sizeof(int)); }, [](int nth) { EL_append_after_last(elements, &nth); },
     [] { EL_release(&elements); }},
    {"ES", [] { stack = ES_create(sizeof(int)); }, [](int nth) { ES_push(stack, &nth); }, [] { ES_release(&stack); }},
    {"DBLL", [] { doubles = DBLL_create(); }, [](int nth) { DBLL_add_double(doubles, nth); },
     [] { DBLL_release(&doubles); }},
    /* The program's own items, which the host knows nothing of. */
    {"SL", [] { linked = SL_create(); }, [](int nth) { SL_append_after_last(linked, &items[nth]); },
     [] { SL_total_release(&linked, leave); }},
    {"GT", [] { tree = GT_create_with_dupl_not_allowed(by_number); },
     [](int nth) { GT_insert_item(tree, &items[nth]); }, [] { GT_release(&tree); }},
    blocks_of<1>("blocks of 1 byte"),
    blocks_of<1016>("blocks of 1016 bytes"),
    blocks_of<1017>("blocks of 1017 bytes"),
    blocks_of<5000>("blocks of 5000 bytes"),
};

/* The most that a node or a block ever took, while they became more and more: tables double. */
size_t worst_of(const filled &under, int count)
{
    const size_t before = bytes_known();
    size_t worst = 0;
    under.begin();
    for (int i = 0; i < count; ++i) {
        under.add(i);
        if (i >= 1000 && i % 251 == 0)
            worst = std::max(worst, (bytes_known() - before) / static_cast<size_t>(i + 1));
    }
    under.end();
    return worst;
}

TEST(Bookkeeping, IsAtMost96BytesANodeOrBlock)
{
    for (int i = 0; i < most; ++i)
        items[i].number = i;
    for (const filled &each : all) {
        SCOPED_TRACE(each.name);
        const size_t worst = worst_of(each, most);
        std::printf("%-24s %zu bytes\n", each.name, worst);
        EXPECT_LE(worst, 96u);
        EXPECT_GE(worst, 16u) << "nothing is known of them";
    }
}

} // namespace
