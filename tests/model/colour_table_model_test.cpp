#include "colour_table_model.h"
#include "random_runs.h"

TEST(ColourTableModel, RandomCallsBehaveAsOnASetAndAMap)
{
    mova::test::run_random(mova::test::run_colour_table_model, 80, 1500);
}

TEST(ColourTableModel, ShortRunsFromTheStartBehaveAsOnASetAndAMap)
{
    mova::test::run_random(mova::test::run_colour_table_model, 1000, 60);
}
