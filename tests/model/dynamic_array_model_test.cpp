#include "dynamic_array_model.h"
#include "random_runs.h"

TEST(DynamicArrayModel, RandomOperationsBehaveAsOnVectors)
{
    mova::test::run_random(mova::test::run_dynamic_array_model, 150, 1500);
}

TEST(DynamicArrayModel, ShortRunsOnNearlyEmptyArraysBehaveAsOnVectors)
{
    mova::test::run_random(mova::test::run_dynamic_array_model, 1500, 40);
}
