/* SPDX-License-Identifier: MIT */
#include "colours.h"

#include <algorithm>

#include <mova/clut/colour_table.h>

namespace atlas {

static std::uint8_t coloured(std::int32_t index, Colour colour)
{
    CLUT_set(index, colour.red, colour.green, colour.blue);
    return static_cast<std::uint8_t>(index);
}

/* Standard indices may have any colour. New indices come after the standard ones. */
static Inks make_inks()
{
    RGBLUT_init(0, nullptr, 0);
    Inks made = {};
    made.sea = coloured(GE_DRKBLU, {14, 36, 56});
    made.graticule = coloured(GE_BLUE, {29, 56, 80});
    made.frame = coloured(GE_DRKCYAN, {52, 86, 114});
    made.border = coloured(GE_GRAY144, {146, 156, 146});
    made.coast = coloured(GE_LGRAY, {244, 225, 178});
    made.text = coloured(GE_WHITE, {250, 246, 232});
    const Colour land[] = {{92, 122, 84},  {140, 132, 86}, {110, 98, 74},
                           {150, 110, 84}, {74, 108, 104}, {122, 100, 114}};
    static_assert(std::size(land) == tint_count);
    std::transform(std::begin(land), std::end(land), made.land.begin(),
                   [](Colour colour) { return coloured(CLUT_new_index(), colour); });
    return made;
}

const Inks &inks()
{
    static const Inks made = make_inks();
    return made;
}

std::vector<Colour> palette()
{
    std::vector<Colour> colours;
    for (std::int32_t index = 0; index <= inks().land.back(); ++index) {
        std::int16_t red, green, blue;
        CLUT_get(index, &red, &green, &blue);
        colours.push_back(
            {static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green), static_cast<std::uint8_t>(blue)});
    }
    return colours;
}

} // namespace atlas
