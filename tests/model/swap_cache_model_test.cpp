#include "random_runs.h"
#include "swap_cache_model.h"

TEST(SwapCacheModel, RandomOperationsBehaveAsOnStrings)
{
    mova::test::run_random(mova::test::run_swap_cache_model, 80, 2000);
}

TEST(SwapCacheModel, ShortRunsOnNearlyEmptyCachesBehaveAsOnStrings)
{
    mova::test::run_random(mova::test::run_swap_cache_model, 2000, 40);
}
