/* SPDX-License-Identifier: MIT */
// mova::swap_cache: an item says how large its body is and fills it
#include <mova/cxx/swap_cache.h>
struct tile {
    int size() const { return 1; }
};
void put_in(mova::swap_cache<tile, char> &cache, tile &each)
{
    cache.insert(each);
}
