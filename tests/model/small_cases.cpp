/* SPDX-License-Identifier: MIT */
#include "small_cases.h"
#include "trace.h"

#include <cstdio>
#include <unordered_map>
#include <utility>

namespace mova::test {

namespace {

using script = choice_script::answers;

class exploration {
public:
    exploration(const model &tried, std::size_t most) : tried_(tried), most_(most) {}

    small_cases run()
    {
        try {
            find_starts();
            for (std::size_t state = 0; state < states_.size(); ++state)
                try_all_from(state);
            leave();
        } catch (const mismatch &) {
            if (!trace::current)
                show_failure();
            throw;
        }
        return {states_.size(), steps_};
    }

private:
    static constexpr std::size_t none = SIZE_MAX;

    /* The operation that led there first, and from where. A start has the draws with which the interpreter begins. */
    struct reached_state {
        std::size_t before;
        script operation;
    };

    void find_starts()
    {
        do {
            choices_.begin();
            begin();
            note_state(none);
            leave();
        } while (choices_.advance());
    }

    void try_all_from(std::size_t state)
    {
        choices_.begin({});
        do {
            try_one_from(state);
        } while (choices_.advance());
    }

    /* Goes on where it is, if that is the state. */
    void try_one_from(std::size_t state)
    {
        from_ = state;
        if (at_ != state)
            go_to(state);
        choices_.begin();
        live_->operate();
        live_->compare();
        ++steps_;
        at_ = note_state(state);
    }

    /* Returns its number; none of one that is too large. */
    std::size_t note_state(std::size_t before)
    {
        state_text described;
        if (!live_->describe(described, most_))
            return none;
        const auto [known, is_new] = known_.try_emplace(described.text(), states_.size());
        if (is_new)
            states_.push_back({before, choices_.taken()});
        return known->second;
    }

    void begin()
    {
        calls_exported_form = false;
        live_ = tried_.create(byte_source(choices_));
        live_->begin();
        live_->compare();
    }

    void leave()
    {
        if (!live_)
            return;
        const choice_script kept = std::exchange(choices_, {});
        live_->finish();
        choices_ = kept;
        live_.reset();
        require(recording_host::get().live_blocks() == 0, "memory is left");
    }

    void go_to(std::size_t state)
    {
        const choice_script tried = choices_;
        leave();
        std::vector<std::size_t> way;
        for (std::size_t at = state; at != none; at = states_[at].before)
            way.push_back(at);
        choices_.begin(states_[way.back()].operation);
        begin();
        for (way.pop_back(); !way.empty(); way.pop_back()) {
            choices_.begin(states_[way.back()].operation);
            live_->operate();
        }
        live_->compare();
        choices_ = tried;
    }

    /* Makes the failing step again, from a fresh start, with its calls printed. */
    void show_failure()
    {
        trace printed(true);
        printed.begin_run();
        trace::current = &printed;
        const choice_script failed = choices_;
        live_.reset();
        try {
            if (from_ != none)
                go_to(from_);
            choices_ = failed;
            choices_.begin();
            from_ == none ? begin() : live_->operate();
        } catch (const std::exception &) {
            std::puts("… which failed");
        }
        trace::current = nullptr;
    }

    const model &tried_;
    const std::size_t most_;
    choice_script choices_;
    std::unique_ptr<byte_interpreter> live_;
    std::size_t at_ = none, from_ = none;
    std::vector<reached_state> states_;
    std::unordered_map<std::string, std::size_t> known_;
    uint64_t steps_ = 0;
};

} // namespace

small_cases try_small_cases(const model &tried, std::size_t most)
{
    return exploration(tried, most).run();
}

} // namespace mova::test
