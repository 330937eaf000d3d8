#include "block_pool_model.h"
#include "random_runs.h"

TEST(BlockPoolModel, RandomOperationsBehaveAsOnStrings)
{
    mova::test::run_random(mova::test::run_block_pool_model, 25, 1500);
}

TEST(BlockPoolModel, ShortRunsOnNearlyEmptyPoolsBehaveAsOnStrings)
{
    mova::test::run_random(mova::test::run_block_pool_model, 300, 40);
}
