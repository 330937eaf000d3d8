/* SPDX-License-Identifier: MIT */
// mova: a list that is closed, opened or cut is given up to what it becomes: say std::move(list).close()
#include <mova/cxx/element_list.h>
mova::element_ring<int> ring_of(mova::element_list<int> &list)
{
    return list.close();
}
