#include "memory_blocks_model.h"
#include "random_runs.h"

TEST(MemoryBlocksModel, RandomOperationsBehaveAsOnStrings)
{
    mova::test::run_random(mova::test::run_memory_blocks_model, 25, 1500);
}

TEST(MemoryBlocksModel, ShortRunsOnNearlyEmptyPoolsBehaveAsOnStrings)
{
    mova::test::run_random(mova::test::run_memory_blocks_model, 300, 40);
}
