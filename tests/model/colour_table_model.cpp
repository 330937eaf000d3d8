/* SPDX-License-Identifier: MIT */
/* Calls on the colour table, good and bad ones, before and after it is made, with a host that throws or one that
   returns, beside a model made of a set and a map. After every call the result, what is raised, called and printed,
   every word of the table and its invariants are compared. Puts the process's colour table back to its start. */
#include "model.h"
#include "expected_calls.h"

#include <tests/support/colour_table_start.h>
#include <mova/clut/internal/invariants.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <set>
#include <utility>

namespace mova::test {

namespace {

using colour = std::array<int16_t, 3>;

/* In the order in which the table sets them. */
int32_t *const words_in_order_of_setting[] = {
    &GE_BLACK, &GE_WHITE, &GE_CLEAR,   &GE_RED,     &GE_LRED,    &GE_GREEN,    &GE_BLUE,   &GE_CYAN,   &GE_MAG,
    &GE_LGRAY, &GE_GRAY,  &GE_DRKGRAY, &GE_GRAY144, &GE_GRAY164, &GE_DRKGREEN, &GE_DRKBLU, &GE_DRKMAG, &GE_DRKCYAN,
};

std::string text(int32_t index, colour value)
{
    return std::to_string(index) + " : " + std::to_string(value[0]) + " " + std::to_string(value[1]) + " " +
           std::to_string(value[2]);
}

/* Writes down what it is told, and the colour that the table holds by then. */
void tell(int32_t index, int16_t red, int16_t green, int16_t blue)
{
    const int32_t level = std::exchange(clut_debug, 0);
    colour stored;
    CLUT_get(index, &stored[0], &stored[1], &stored[2]);
    clut_debug = level;
    recording_host::get().write_down("told " + text(index, {red, green, blue}) + " stored " + text(index, stored));
}

/* What a host that throws ends a call of the model with. */
struct ended {};

/* The table as it is described: the free indices, the dynamic ones among the others, and the colours that are not black.
   It says what the library must call. */
class model_table {
public:
    explicit model_table(expected_calls &calls) : calls_(calls) {}

    bool host_throws = false;
    bool tells = false;
    bool intact = false; /* whether the invariants must hold */
    int32_t level = 0;
    std::map<const int32_t *, int32_t> words;

    void init(int32_t entries, bool with_callback)
    {
        check(!initialised_, 93);
        initialised_ = true;
        if (entries == 0 && !with_callback)
            entries = 256;
        else
            print(1, "Initialising Clut Table, " + std::to_string(size_) + " entries");
        make(entries);
        tells = with_callback;
        for (const standard_colour &standard : standard_colours)
            words[standard.word] = first_free_++;
        intact = size_ >= first_free_;
        check(intact, 134);
        if (!intact)
            return;
        for (const int32_t *word : words_in_order_of_setting)
            set(words[word], value_of(word));
        free_.erase(free_.begin(), free_.lower_bound(first_free_));
    }

    void alloc(int32_t index)
    {
        check(initialised_, 167);
        check(static_phase_, 168);
        if (!holds(index))
            return;
        check(is_free(index), 169);
        free_.erase(index);
        dynamic_.erase(index);
        print(1, "CLUT alloc " + std::to_string(index));
    }

    int32_t new_index()
    {
        calls_.call("debug_break");
        check(initialised_, 186);
        if (static_phase_ && !reserve())
            return 0;
        const auto found = free_.lower_bound(first_free_);
        const bool full = found == free_.end();
        const int32_t index = full ? dirty_ : *found;
        first_free_ = (full ? std::max(first_free_, size_) : index) + 1;
        if (!holds(index))
            return 0;
        free_.erase(index);
        dynamic_.insert(index);
        print(1, "new index : " + std::to_string(index));
        if (index == dirty_ && !warned_)
            calls_.call("message WARNING-CLUT FULL");
        warned_ = index == dirty_;
        return index;
    }

    void release(int32_t index)
    {
        calls_.call("debug_break");
        check(initialised_, 240);
        if (!holds(index))
            return;
        check(dynamic_.contains(index), 241);
        if (index == dirty_)
            return;
        dynamic_.erase(index);
        free_.insert(index);
        print(1, "free index : " + std::to_string(index));
        first_free_ = std::min(first_free_, index);
    }

    void set(int32_t index, colour value)
    {
        check(initialised_, 265);
        check(index < size_, 266);
        if (!holds(index))
            return;
        if (is_free(index))
            alloc(index);
        told(index, value);
        colours_[index] = value;
        print(2, "set index : " + text(index, value));
    }

    colour get(int32_t index, colour before)
    {
        check(initialised_, 284);
        if (index >= size_)
            return {255, 255, 255};
        if (index < 0)
            return before;
        print(2, "get index : " + text(index, colours_[index]));
        return colours_[index];
    }

    void copy(int32_t destination, int32_t source)
    {
        check(initialised_, 300);
        check(destination < size_ && source < size_, 302);
        if (!holds(destination) || !holds(source))
            return;
        check(!is_free(destination) && !is_free(source), 303);
        colours_[destination] = colours_[source];
        told(destination, colours_[source]);
    }

    void statistics()
    {
        std::array<int, 3> counts = {size_ > 0 ? 1 : 0, 0, 0};
        for (int32_t index = 1; index < size_; ++index)
            ++counts[static_cast<std::size_t>(state_of(index))];
        report("Clut Size", size_);
        report("First Free index", first_free_);
        report("Dirty index", dirty_);
        report("Number of free indices", counts[0]);
        report("Number of hard indices", counts[1]);
        report("Number of dynamic indices", counts[2]);
    }

    /* The first free index of a full table goes on for ever; and what is printed matters to nothing else. */
    bool describe(state_text &state, std::size_t past_the_end) const
    {
        state.add(host_throws, tells, intact, level, size_, first_free_, dirty_, initialised_, static_phase_, warned_);
        for (int32_t index = 0; index < size_; ++index) {
            const auto stored = colours_.find(index);
            const colour value = stored == colours_.end() ? colour{} : stored->second;
            state.add(state_of(index), value[0], value[1], value[2]);
        }
        const bool prints_alone = level == 0 || (!tells && host_throws && past_the_end > 0);
        return first_free_ <= std::max(size_, 39) + static_cast<int32_t>(past_the_end) && prints_alone &&
               (host_throws || past_the_end > 0);
    }

    /* Throws mismatch where the library's words are others. */
    void compare()
    {
        require(clut::table.size == size_, "another size");
        require(clut_shown.size == std::max(size_, 0) && clut_shown.first == clut::table.colours,
                "other colours are shown");
        require(modules.rgblut.first_free_index == first_free_, "another first free index");
        require(clut::table.dirty_index == dirty_, "another dirty index");
        require((modules.rgblut.full_warning != 0) == warned_, "another warning flag");
        for (int32_t index = 0; index < size_; ++index) {
            const clut::colour &stored = clut::table.colours[index];
            require(clut::table.states[index] == state_of(index), "another state of " + std::to_string(index));
            require(colour{stored.red, stored.green, stored.blue} == colours_[index],
                    "another colour of " + std::to_string(index));
        }
        for (const standard_colour &standard : standard_colours)
            require(*standard.word == words[standard.word], "another index word");
        const int broken = intact ? clut::broken_invariant() : 0;
        require(broken == 0, "invariant " + std::to_string(broken) + " is broken");
    }

private:
    static colour value_of(const int32_t *word)
    {
        for (const standard_colour &standard : standard_colours) {
            if (standard.word == word)
                return {standard.red, standard.green, standard.blue};
        }
        throw mismatch("no such standard colour");
    }

    void check(bool holds, int32_t line)
    {
        if (holds)
            return;
        calls_.raise("RGBLUT", line, 4297);
        if (host_throws)
            throw ended();
        intact = false;
    }

    void print(int32_t at_level, const std::string &line)
    {
        if (at_level == 1 ? level != 0 : level >= at_level)
            calls_.call("dprintf " + line + "\n");
    }

    void report(const std::string &name, int32_t number)
    {
        calls_.call("dprintf " + name + " : " + std::to_string(number) + "\n");
    }

    void told(int32_t index, colour value)
    {
        if (tells)
            calls_.call("told " + text(index, value) + " stored " + text(index, colours_[index]));
    }

    void make(int32_t entries)
    {
        size_ = entries;
        free_.clear();
        dynamic_.clear();
        colours_.clear();
        for (int32_t index = 0; index < size_; ++index)
            free_.insert(free_.end(), index);
    }

    bool reserve()
    {
        static_phase_ = false;
        const auto found = free_.lower_bound(first_free_);
        first_free_ = found == free_.end() ? std::max(first_free_, size_) : *found;
        intact = intact && found != free_.end();
        check(found != free_.end(), 191);
        if (found == free_.end())
            return false;
        dirty_ = *found;
        dynamic_.insert(dirty_);
        free_.erase(found);
        return true;
    }

    bool holds(int32_t index) const { return index >= 0 && index < size_; }
    bool is_free(int32_t index) const { return free_.contains(index); }
    int32_t state_of(int32_t index) const { return is_free(index) ? 0 : dynamic_.contains(index) ? 2 : 1; }

    expected_calls &calls_;
    std::set<int32_t> free_, dynamic_;
    std::map<int32_t, colour> colours_;
    int32_t size_ = 0, first_free_ = 20, dirty_ = 0;
    bool initialised_ = false, static_phase_ = true, warned_ = false;
};

class interpreter : public byte_interpreter {
public:
    explicit interpreter(byte_source bytes) : byte_interpreter(bytes)
    {
        restart_colour_table();
        model_.host_throws = bytes_.below(4, 2) != 0;
        recording_host::get().set_raise_mode(model_.host_throws ? recording_host::raise_mode::throws
                                                                : recording_host::raise_mode::returns);
        if (bytes_.below(8, 2) != 0)
            init();
    }

private:
    using operation = void (interpreter::*)();

    void operate() override
    {
        static constexpr operation operations[] = {
            &interpreter::new_index, &interpreter::new_index,  &interpreter::new_index, &interpreter::release,
            &interpreter::release,   &interpreter::release,    &interpreter::release,   &interpreter::set,
            &interpreter::set,       &interpreter::set_rgb,    &interpreter::get,       &interpreter::copy,
            &interpreter::copy,      &interpreter::statistics, &interpreter::set_level, &interpreter::alloc_or_init,
        };
        do_one_of(operations);
    }

    void finish() override { expected_.require_nothing_left(); }

    /* A table is of 41 entries, or of too few. */
    bool describe(state_text &state, std::size_t most) const override { return model_.describe(state, most); }

    /* Calls the model, then the library; both must end alike. */
    template <class OnModel, class OnTable>
    void both(OnModel on_model, OnTable on_table)
    {
        bool model_ended = false, table_ended = false;
        try {
            on_model();
        } catch (const ended &) {
            model_ended = true;
        }
        try {
            on_table();
        } catch (const raised &) {
            table_ended = true;
        }
        require(model_ended == table_ended, "one of the two calls was ended by a raise");
    }

    /* Some lie outside the table. */
    int32_t any_index()
    {
        static constexpr int32_t few[] = {-1, 25, 40, 41};
        return bytes_.is_exhaustive() ? few[bytes_.below(std::size(few))] : bytes_.next() % 100 - 4;
    }

    colour any_colour()
    {
        if (bytes_.is_exhaustive())
            return {-1, 0, -1}; /* as set_rgb makes */
        const auto component = [this] { return static_cast<int16_t>(bytes_.next() * 131 - 300); };
        return {component(), component(), component()};
    }

    void init()
    {
        const int32_t entries = any_size();
        const bool with_callback = bytes_.below(3, 2) != 0;
        both([&] { model_.init(entries, with_callback); },
             [&] { RGBLUT_init(entries, with_callback ? tell : nullptr, 0); });
    }

    int32_t any_size()
    {
        if (bytes_.is_exhaustive())
            return bytes_.below(2) == 0 ? 38 : 41;
        return bytes_.below(8) == 0 ? bytes_.next() % 42 - 2 : 39 + bytes_.next() % 60;
    }

    void alloc_or_init()
    {
        if (bytes_.below(8, 2) == 0)
            return init();
        const int32_t index = any_index();
        both([&] { model_.alloc(index); }, [&] { CLUT_alloc(index); });
    }

    void new_index()
    {
        int32_t expected = -1, index = -1;
        both([&] { expected = model_.new_index(); }, [&] { index = CLUT_new_index(); });
        require(index == expected, "another new index");
    }

    void release()
    {
        const int32_t index = any_index();
        both([&] { model_.release(index); }, [&] { CLUT_release_index(index); });
    }

    void set()
    {
        const int32_t index = any_index();
        const colour value = any_colour();
        both([&] { model_.set(index, value); }, [&] { CLUT_set(index, value[0], value[1], value[2]); });
    }

    /* Fractions of which 255 times are no whole numbers, but for 0. */
    void set_rgb()
    {
        const int32_t index = any_index();
        const int16_t component = static_cast<int16_t>(bytes_.is_exhaustive() ? -1 : bytes_.next() - 100);
        const float fraction = (static_cast<float>(component) + (component < 0 ? -0.5F : 0.5F)) / 255.0F;
        both(
            [&] {
                model_.set(index, {component, 0, component});
            },
            [&] { CLUT_set_RGB(index, fraction, 0.0F, fraction); });
    }

    void get()
    {
        const int32_t index = any_index();
        colour expected = {-7, -8, -9}, found = expected;
        both([&] { expected = model_.get(index, expected); },
             [&] { CLUT_get(index, &found[0], &found[1], &found[2]); });
        require(found == expected, "another colour was got");
    }

    void copy()
    {
        const int32_t destination = any_index(), source = any_index();
        both([&] { model_.copy(destination, source); }, [&] { CLUT_copy(destination, source); });
    }

    void statistics()
    {
        both([&] { model_.statistics(); }, CLUT_statistics);
    }

    void set_level() { clut_debug = model_.level = bytes_.between(-1, 3, 0, 1) * (bytes_.is_exhaustive() ? 2 : 1); }

    void compare() override
    {
        expected_.compare();
        model_.compare();
    }

    expected_calls expected_;
    model_table model_{expected_};
};

[[maybe_unused]] const bool added = add_model<interpreter>("colour_table", {80, 1500}, {1000, 60}, {0, 1});

} // namespace

} // namespace mova::test
