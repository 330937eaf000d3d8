/* SPDX-License-Identifier: MIT */
#include "fault_plan.h"

namespace mova::test {

fault_plan &fault_plan::get()
{
    static fault_plan plan;
    return plan;
}

void fault_plan::arm(fault_source source, fault_way way, int nth, bool lasting)
{
    source_ = source;
    way_ = way;
    calls_left_ = nth;
    lasting_ = lasting;
    has_struck_ = false;
}

bool fault_plan::strikes(fault_source source)
{
    if (source != source_ || calls_left_ == 0 || --calls_left_ > 0)
        return false;
    has_struck_ = true;
    calls_left_ = lasting_ ? 1 : 0;
    if (way_ == fault_way::throws)
        throw fault{};
    if (way_ == fault_way::jumps)
        std::longjmp(target_, 1);
    return true;
}

} // namespace mova::test
