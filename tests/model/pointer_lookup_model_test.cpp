#include "pointer_lookup_model.h"
#include "random_runs.h"

TEST(PointerLookupModel, RandomOperationsBehaveAsOnTheLiteralTable)
{
    mova::test::run_random(mova::test::run_pointer_lookup_model, 60, 2000);
}

TEST(PointerLookupModel, ShortRunsOnNearlyEmptyLookupsBehaveAsOnTheLiteralTable)
{
    mova::test::run_random(mova::test::run_pointer_lookup_model, 2000, 40);
}
