#include "random_runs.h"
#include "sorted_number_array_model.h"

TEST(SortedNumberArrayModel, RandomEditsOfACompanionAreFollowed)
{
    mova::test::run_random(mova::test::run_sorted_number_array_model, 150, 1500);
}

TEST(SortedNumberArrayModel, ShortRunsOnNearlyEmptyCompanionsAreFollowed)
{
    mova::test::run_random(mova::test::run_sorted_number_array_model, 1500, 40);
}
