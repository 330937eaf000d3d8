/* SPDX-License-Identifier: MIT */
#include <mova/frame/internal/module_records.h>

#include <algorithm>
#include <array>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <mova/host/errors.h>

namespace {

using mova::modules;

std::array<const mova::module_record *, 11> in_order()
{
    return {&modules.cache,    &modules.unused_egenlist, &modules.genlist, &modules.egenlist, &modules.egenstack,
            &modules.sgenlist, &modules.gentree,         &modules.darray,  &modules.sortar,   &modules.plut,
            &modules.rgblut};
}

TEST(ModuleRecords, TheElevenNamesAreInTheirOrder)
{
    std::vector<std::string> names;
    for (const mova::module_record *record : in_order())
        names.emplace_back(record->name);
    EXPECT_EQ(names, (std::vector<std::string>{"cache", "egenlist", "genlist", "egenlist", "egenstack", "sgenlist",
                                               "gentree", "darray", "sortar", "plut", "RGBLUT"}));
}

TEST(ModuleRecords, TheRecordsLieInMemoryInTheirOrder)
{
    const auto records = in_order();
    EXPECT_TRUE(std::is_sorted(records.begin(), records.end(), std::less_equal<>()));
    EXPECT_EQ(static_cast<const void *>(records.front()), &modules);
    EXPECT_EQ(reinterpret_cast<const char *>(records.back()) + sizeof modules.rgblut,
              reinterpret_cast<const char *>(&modules + 1));
}

TEST(ModuleRecords, TheTreeCountsItsTreesNodesAndIteratorsFromZero)
{
    EXPECT_EQ(modules.gentree.live_trees, 0);
    EXPECT_EQ(modules.gentree.live_nodes, 0);
    EXPECT_EQ(modules.gentree.live_iterators, 0);
    EXPECT_LT(&modules.gentree.live_trees, &modules.gentree.live_nodes);
    EXPECT_LT(&modules.gentree.live_nodes, &modules.gentree.live_iterators);
}

TEST(ModuleRecords, TheColourTableStartsItsSearchAt20InItsStaticPhase)
{
    EXPECT_EQ(modules.rgblut.first_free_index, 20);
    EXPECT_EQ(modules.rgblut.full_warning, 0);
    EXPECT_EQ(modules.rgblut.initialised, 0);
    EXPECT_EQ(modules.rgblut.static_phase, 1);
    EXPECT_LT(&modules.rgblut.first_free_index, &modules.rgblut.full_warning);
    EXPECT_LT(&modules.rgblut.full_warning, &modules.rgblut.initialised);
    EXPECT_LT(&modules.rgblut.initialised, &modules.rgblut.static_phase);
}

struct raise_arguments {
    const char *module = nullptr;
    int32_t line = 0;
    int32_t code = 0;
};

raise_arguments last_raise;

void keep(const char *module, int32_t line, int32_t code)
{
    last_raise = {module, line, code};
}

TEST(Raise, PassesTheRecordsNameTheLineAndTheCodeAndSurvivesAHostThatReturns)
{
    mova_set_error_handler(keep);
    mova::raise(modules.gentree, 481, MOVA_PRECONDITION_BROKEN);
    mova_set_error_handler(nullptr);
    EXPECT_EQ(last_raise.module, modules.gentree.name);
    EXPECT_EQ(last_raise.line, 481);
    EXPECT_EQ(last_raise.code, 4297);
}

TEST(Raise, LetsTheExceptionOfTheDefaultHostThrough)
{
    EXPECT_THROW(mova::raise(modules.darray, 33, MOVA_ALLOCATION_FAILED), mova::error);
}

} // namespace
