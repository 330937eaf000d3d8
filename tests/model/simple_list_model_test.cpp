#include "random_runs.h"
#include "simple_list_model.h"

TEST(SimpleListModel, RandomOperationsBehaveAsOnVectors)
{
    mova::test::run_random(mova::test::run_simple_list_model, 400, 2000);
}

TEST(SimpleListModel, ShortRunsOnNearlyEmptyListsBehaveAsOnVectors)
{
    mova::test::run_random(mova::test::run_simple_list_model, 4000, 40);
}
