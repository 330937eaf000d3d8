#include "generic_list_model.h"
#include "random_runs.h"

TEST(GenericListModel, RandomOperationsBehaveAsOnVectors)
{
    mova::test::run_random(mova::test::run_generic_list_model, 400, 2000);
}

TEST(GenericListModel, ShortRunsOnNearlyEmptyListsBehaveAsOnVectors)
{
    mova::test::run_random(mova::test::run_generic_list_model, 4000, 40);
}
