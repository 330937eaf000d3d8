/* SPDX-License-Identifier: MIT */
/* The colour table is one for the process. These let a program run several scenarios on it, one after the other. */
#ifndef MOVA_TESTS_SUPPORT_COLOUR_TABLE_START_H
#define MOVA_TESTS_SUPPORT_COLOUR_TABLE_START_H

#include <mova/clut/colour_table.h>
#include <mova/clut/internal/table_state.h>
#include <mova/frame/internal/module_records.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>

namespace mova::test {

struct standard_colour {
    int32_t *word;
    int32_t index; /* in a table that is made once, from the start */
    int16_t red, green, blue;
};

/* In the order of their indices. */
inline constexpr standard_colour standard_colours[] = {
    {&GE_WHITE, 20, 255, 255, 255}, {&GE_CLEAR, 21, 255, 255, 255},   {&GE_BLACK, 22, 0, 0, 0},
    {&GE_RED, 23, 255, 0, 0},       {&GE_LRED, 24, 237, 164, 164},    {&GE_BLUE, 25, 0, 0, 255},
    {&GE_LGRAY, 26, 220, 220, 220}, {&GE_GRAY, 27, 127, 127, 127},    {&GE_GREEN, 28, 0, 255, 0},
    {&GE_CYAN, 29, 0, 255, 255},    {&GE_MAG, 30, 189, 0, 189},       {&GE_DRKGREEN, 31, 0, 200, 0},
    {&GE_DRKMAG, 32, 200, 0, 200},  {&GE_DRKBLU, 33, 0, 0, 200},      {&GE_DRKGRAY, 34, 100, 100, 100},
    {&GE_SYS32, 35, 0, 0, 0},       {&GE_GRAY144, 36, 144, 144, 144}, {&GE_GRAY164, 37, 164, 164, 164},
    {&GE_DRKCYAN, 38, 0, 200, 200},
};

/* Puts the table's words back to what they were at the first call, and frees the table. The first call, when nothing
   has touched the table yet, changes nothing, so that it is the library's own start that is tested. */
inline void restart_colour_table()
{
    static const clut_module_record first_record = modules.rgblut;
    static const clut::table_state first_state = clut::table;
    static const int32_t first_debug = clut_debug;
    static const auto first_words = [] {
        std::array<int32_t, std::size(standard_colours)> words;
        std::ranges::transform(standard_colours, words.begin(), [](const auto &standard) { return *standard.word; });
        return words;
    }();
    std::free(clut::table.states);
    std::free(clut::table.colours);
    modules.rgblut = first_record;
    clut::use_table(first_state);
    clut_debug = first_debug;
    for (std::size_t i = 0; i < first_words.size(); ++i)
        *standard_colours[i].word = first_words[i];
}

} // namespace mova::test

#endif
