#include "hash_table_model.h"
#include "random_runs.h"

TEST(HashTableModel, RandomOperationsBehaveAsOnTheLiteralTable)
{
    mova::test::run_random(mova::test::run_hash_table_model, 60, 1500);
}

TEST(HashTableModel, ShortRunsOnNearlyEmptyTablesBehaveAsOnTheLiteralTable)
{
    mova::test::run_random(mova::test::run_hash_table_model, 4000, 40);
}
