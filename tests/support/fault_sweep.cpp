/* SPDX-License-Identifier: MIT */
#include "fault_sweep.h"

#include <algorithm>

namespace mova::test::fault_sweep {

namespace {

constexpr const char *source_names[] = {"allocation", "block of the pool", "address in the pool", "raise",
                                        "text",       "callback"};
constexpr const char *way_names[] = {"throws", "jumps", "answers with a failure"};
constexpr const char *raise_names[] = {"throws", "returns", "jumps"};

} // namespace

std::string description_of(const failure &failed)
{
    std::string text = std::string(source_names[static_cast<int>(failed.source)]) + " " + std::to_string(failed.nth) +
                       (failed.lasting ? " and every later one " : " ") + way_names[static_cast<int>(failed.way)];
    if (failed.way == fault_way::answers)
        text += std::string("; a raise ") + raise_names[static_cast<int>(failed.raises)];
    return text;
}

void arm(const failure &failed)
{
    recording_host::get().set_raise_mode(failed.raises);
    fault_plan::get().arm(failed.source, failed.way, failed.nth, failed.lasting);
}

bool is_defined(const failure &failed, const answers &answered)
{
    return failed.way != fault_way::answers || std::ranges::find(answered.of, failed.source) != answered.of.end();
}

ending ending_of(const failure &failed)
{
    if (failed.way == fault_way::throws)
        return ending::threw;
    if (failed.way == fault_way::jumps)
        return ending::jumped;
    return failed.raises == raise_mode::throws  ? ending::threw
           : failed.raises == raise_mode::jumps ? ending::jumped
                                                : ending::completed;
}

std::vector<failure> kinds_of_failure(bool with_jumps)
{
    std::vector<failure> kinds;
    for (fault_source source : {fault_source::allocation, fault_source::pool_allocation, fault_source::pool_address,
                                fault_source::raise, fault_source::text, fault_source::callback}) {
        for (bool lasting : {false, true}) {
            kinds.push_back({source, fault_way::throws, raise_mode::throws, lasting, 1});
            kinds.push_back({source, fault_way::jumps, raise_mode::throws, lasting, 1});
            kinds.push_back({source, fault_way::answers, raise_mode::returns, lasting, 1});
            if (source != fault_source::allocation && source != fault_source::pool_allocation)
                continue;
            kinds.push_back({source, fault_way::answers, raise_mode::throws, lasting, 1});
            kinds.push_back({source, fault_way::answers, raise_mode::jumps, lasting, 1});
        }
    }
    if (!with_jumps)
        std::erase_if(kinds, [](const failure &kind) {
            return kind.way == fault_way::jumps || kind.raises == raise_mode::jumps;
        });
    return kinds;
}

bool check_lost_blocks(bool may_lose)
{
    recording_host &host = recording_host::get();
    const std::size_t lost = host.live_blocks() + host.pool().live_blocks();
    if (!may_lose) {
        EXPECT_EQ(lost, 0u) << "blocks were lost";
    }
    EXPECT_EQ(host.take_complaints(), std::vector<std::string>{});
    return lost != 0;
}

} // namespace mova::test::fault_sweep
