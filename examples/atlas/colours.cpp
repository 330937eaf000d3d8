/* SPDX-License-Identifier: MIT */
#include "colours.h"

namespace atlas {

static std::uint8_t coloured(std::int32_t index, mova::colour colour)
{
    mova::colour_table::set(index, colour);
    return static_cast<std::uint8_t>(index);
}

/* Standard indices may have any colour. New indices come after the standard ones, and are never given back. */
static Inks make_inks()
{
    mova::colour_table::make();
    const auto land = [](mova::colour colour) {
        return static_cast<std::uint8_t>(mova::dynamic_colour(colour).release());
    };
    return {coloured(GE_DRKBLU, {14, 36, 56}),
            coloured(GE_BLUE, {29, 56, 80}),
            coloured(GE_DRKCYAN, {52, 86, 114}),
            coloured(GE_GRAY144, {146, 156, 146}),
            coloured(GE_LGRAY, {244, 225, 178}),
            coloured(GE_WHITE, {250, 246, 232}),
            {land({92, 122, 84}), land({140, 132, 86}), land({110, 98, 74}), land({150, 110, 84}), land({74, 108, 104}),
             land({122, 100, 114})}};
}

const Inks &inks()
{
    static const Inks made = make_inks();
    return made;
}

std::vector<mova::colour> palette()
{
    std::vector<mova::colour> colours;
    for (std::int32_t index = 0; index <= inks().land.back(); ++index)
        colours.push_back(mova::colour_table::get(index));
    return colours;
}

} // namespace atlas
