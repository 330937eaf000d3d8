#include "block_array_model.h"
#include "random_runs.h"

TEST(BlockArrayModel, RandomOperationsBehaveAsOnVectors)
{
    mova::test::run_random(mova::test::run_block_array_model, 150, 1500);
}

TEST(BlockArrayModel, ShortRunsOnNearlyEmptyArraysBehaveAsOnVectors)
{
    mova::test::run_random(mova::test::run_block_array_model, 1500, 40);
}
