#include "element_list_model.h"
#include "random_runs.h"

TEST(ElementListModel, RandomOperationsBehaveAsOnVectors)
{
    mova::test::run_random(mova::test::run_element_list_model, 400, 2000);
}

TEST(ElementListModel, ShortRunsOnNearlyEmptyListsBehaveAsOnVectors)
{
    mova::test::run_random(mova::test::run_element_list_model, 4000, 40);
}
