#include "id_lookup_table_model.h"
#include "random_runs.h"

TEST(IdLookupTableModel, RandomOperationsBehaveAsOnAVector)
{
    mova::test::run_random(mova::test::run_id_lookup_table_model, 60, 1500);
}

TEST(IdLookupTableModel, ShortRunsOnNearlyEmptyTablesBehaveAsOnAVector)
{
    mova::test::run_random(mova::test::run_id_lookup_table_model, 600, 40);
}
