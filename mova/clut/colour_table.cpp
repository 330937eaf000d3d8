/* SPDX-License-Identifier: MIT */
#define MOVA_OWN_COLOUR_TABLE
#include <mova/clut/colour_table.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <utility>

#include <mova/clut/internal/invariants.h>
#include <mova/clut/internal/table_state.h>
#include <mova/frame/internal/assert.h>
#include <mova/frame/internal/module_records.h>
#include <mova/frame/internal/undo.h>

/* Weak, so that a program in a static link can define it too. */
[[gnu::weak]] int32_t clut_debug = 0;

clut_colours clut_shown = {};

int32_t GE_CLEAR = 0, GE_WHITE = 0, GE_BLACK = 0, GE_RED = 0, GE_LRED = 0, GE_GREEN = 0, GE_BLUE = 0, GE_GRAY = 0,
        GE_LGRAY = 0, GE_GRAY144 = 0, GE_GRAY164 = 0, GE_CYAN = 0, GE_MAG = 0, GE_DRKGREEN = 0, GE_DRKMAG = 0,
        GE_DRKBLU = 0, GE_DRKCYAN = 0, GE_DRKGRAY = 0, GE_SYS32 = 0;

namespace mova::clut {

table_state table = {};

void use_table(const table_state &used)
{
    table = used;
    clut_shown = {std::max(table.size, 0), table.colours};
}

namespace {

/* What the record holds of the table's state. */
clut_module_record &words = modules.rgblut;

constexpr int32_t default_entries = 256;

/* The order of the indices. Programs depend on it. */
int32_t *const standard_indices[] = {
    &GE_WHITE,   &GE_CLEAR, &GE_BLACK,   &GE_RED,     &GE_LRED,     &GE_BLUE,   &GE_LGRAY,
    &GE_GRAY,    &GE_GREEN, &GE_CYAN,    &GE_MAG,     &GE_DRKGREEN, &GE_DRKMAG, &GE_DRKBLU,
    &GE_DRKGRAY, &GE_SYS32, &GE_GRAY144, &GE_GRAY164, &GE_DRKCYAN,
};

struct standard_colour {
    const int32_t *index;
    colour value;
};

/* The order in which the colours are set, in which the callback hears of them too. GE_SYS32 gets none. */
const standard_colour standard_colours[] = {
    {&GE_BLACK, {0, 0, 0}},         {&GE_WHITE, {255, 255, 255}},   {&GE_CLEAR, {255, 255, 255}},
    {&GE_RED, {255, 0, 0}},         {&GE_LRED, {237, 164, 164}},    {&GE_GREEN, {0, 255, 0}},
    {&GE_BLUE, {0, 0, 255}},        {&GE_CYAN, {0, 255, 255}},      {&GE_MAG, {189, 0, 189}},
    {&GE_LGRAY, {220, 220, 220}},   {&GE_GRAY, {127, 127, 127}},    {&GE_DRKGRAY, {100, 100, 100}},
    {&GE_GRAY144, {144, 144, 144}}, {&GE_GRAY164, {164, 164, 164}}, {&GE_DRKGREEN, {0, 200, 0}},
    {&GE_DRKBLU, {0, 0, 200}},      {&GE_DRKMAG, {200, 0, 200}},    {&GE_DRKCYAN, {0, 200, 200}},
};

/* Raises unless the condition holds. A host may return from it. */
void require(bool holds, int32_t line)
{
    if (!holds)
        raise(modules.rgblut, line, MOVA_PRECONDITION_BROKEN);
}

/* Whether there is no such index, so that nothing of it may be touched. */
bool is_outside(int32_t index)
{
    return index < 0 || index >= table.size;
}

template <class T>
T *zeroed(size_t count)
{
    return static_cast<T *>(std::calloc(count, sizeof(T)));
}

void free_arrays(const table_state &of)
{
    std::free(of.states);
    std::free(of.colours);
}

/* All that making a table changes, as it is now. */
class saved_table {
public:
    saved_table()
    {
        std::ranges::transform(standard_indices, indices_, [](const int32_t *index) { return *index; });
    }

    const table_state &state() const { return state_; }

    void restore() const
    {
        use_table(state_);
        words = words_;
        for (std::size_t i = 0; i < std::size(indices_); ++i)
            *standard_indices[i] = indices_[i];
    }

private:
    table_state state_ = table;
    clut_module_record words_ = words;
    int32_t indices_[std::size(standard_indices)];
};

void make_table(int32_t size, CLUT_callback callback, mova_word client_word)
{
    const size_t count = static_cast<size_t>(std::max(size, 0));
    int32_t *states = zeroed<int32_t>(count + 1);
    use_table({size, table.dirty_index, states, zeroed<colour>(count), callback, client_word});
}

void assign_standard_indices()
{
    for (int32_t *index : standard_indices)
        *index = words.first_free_index++;
}

void set_standard_colours()
{
    for (const standard_colour &standard : standard_colours)
        CLUT_set(*standard.index, standard.value.red, standard.value.green, standard.value.blue);
}

/* How indices are handed out and come back. The lowest free one is next. No free index lies below the first free index
   (invariant 4), so a search begins there. A table of 44, of which the dirty index is 39 (D); the others are dynamic (d)
   or free (.):

                         39 40 41 42 43 | first free index
                          D  d  d  d  . | 43
       release of 41      D  d  .  d  . | 41    a lower one that comes back is the next
       release of 40      D  .  .  d  . | 40
       request gives 40   D  d  .  d  . | 41
       request gives 41   D  d  d  d  . | 42    which is taken: the next search passes over it
       request gives 43   D  d  d  d  d | 44
       request gives 39   D  d  d  d  d | 45    full
       release of 42      D  d  d  .  d | 42

   A request:
     1. The first one takes the index that is found for the dirty index; it then goes on like any other.
     2. Search from the first free index for one that is free, and keep its place there.
     3. Where there is one, that is the result, else the dirty index is.
     4. Count the first free index up in both cases. So it climbs past the end of a full table with every request, which
        is deliberate and does no harm: nothing is looked at there, and the next release brings it back.
     5. The result is dynamic, as the dirty index is anyway.

   A release:
     6. The index is free.
     7. Where it is lower than the first free index, that is it. */

/* 2 */
void find_free_index()
{
    if (words.first_free_index >= table.size)
        return;
    const int32_t *states = table.states;
    const int32_t *found = std::find(states + words.first_free_index, states + table.size, int32_t{free_index});
    words.first_free_index = static_cast<int32_t>(found - states);
}

/* 1: ends the static phase. Returns false where there is no index to reserve. */
bool reserve_dirty_index()
{
    assert(table.dirty_index == 0); /* invariant 3 */
    words.static_phase = 0;
    find_free_index();
    if (words.first_free_index >= table.size) {
        require(false, 191);
        return false;
    }
    table.dirty_index = words.first_free_index;
    table.states[table.dirty_index] = dynamic_index;
    return true;
}

/* 3 and 4 */
int32_t take_index()
{
    find_free_index();
    const int32_t found = words.first_free_index;
    if (found != std::numeric_limits<int32_t>::max())
        ++words.first_free_index;
    return found < table.size ? found : table.dirty_index;
}

/* Warns once for each run of requests that the dirty index answers. */
void warn_when_full(int32_t index)
{
    if (index != table.dirty_index) {
        words.full_warning = 0;
    } else if (!words.full_warning) {
        MSG_Message("WARNING-CLUT FULL");
        words.full_warning = 1;
    }
}

/* Gives an index the state that it had before, and lets the search find it where it was free. */
void put_back(int32_t index, int32_t before)
{
    table.states[index] = before;
    if (before == free_index)
        words.first_free_index = std::min(words.first_free_index, index);
}

/* What is printed, and undone where that fails, stands apart: the ordinary course saves no registers for it. */
[[gnu::noinline]] void set_state_and_print(int32_t index, int32_t state, const char *format)
{
    const int32_t before = std::exchange(table.states[index], state);
    or_undo([=] { mova_dprintf(format, index); }, [=] { put_back(index, before); });
}

/* Changes a state, and tells of it under clut_debug. Where that fails, the state is the old one again. */
void set_state(int32_t index, int32_t state, const char *format)
{
    assert(!is_outside(index) && is_state(state)); /* for invariants 1 and 2 */
    if (clut_debug)
        set_state_and_print(index, state, format);
    else
        table.states[index] = state;
}

/* Stores a colour and then calls `tell`. Where that fails, the colour is the old one again. */
template <class Tell>
void store_and(int32_t index, colour value, const Tell &tell)
{
    const colour before = std::exchange(table.colours[index], value);
    or_undo(tell, [=] { table.colours[index] = before; });
}

[[gnu::noinline]] void store_and_print(int32_t index, int16_t red, int16_t green, int16_t blue)
{
    store_and(index, {red, green, blue}, [=] { mova_dprintf("set index : %d : %d %d %d\n", index, red, green, blue); });
}

void tell_and_store(int32_t index, int16_t red, int16_t green, int16_t blue)
{
    if (table.callback)
        table.callback(index, red, green, blue);
    if (clut_debug >= 2)
        store_and_print(index, red, green, blue);
    else
        table.colours[index] = {red, green, blue};
}

int16_t component(float fraction)
{
    return static_cast<int16_t>(static_cast<int32_t>(fraction * 255.0F));
}

} // namespace

} // namespace mova::clut

using namespace mova::clut;

void RGBLUT_init(int32_t entries, CLUT_callback callback, mova_word client_word)
{
    require(!words.initialised, 93);
    const saved_table old;
    words.initialised = 1;
    if (entries == 0 && !callback)
        entries = default_entries;
    else if (clut_debug)
        mova::or_undo([] { mova_dprintf("Initialising Clut Table, %d entries\n", table.size); },
                      [&] { old.restore(); });
    make_table(entries, callback, client_word);
    assign_standard_indices();
    const bool is_large_enough = table.size >= words.first_free_index;
    if (is_large_enough)
        mova::or_undo(set_standard_colours, [&] {
            free_arrays(table);
            old.restore();
        });
    /* There is an old table where the host returned from the raise for the second one. */
    free_arrays(old.state());
    require(is_large_enough, 134);
    /* The callback may have asked for indices until the search was past the end. */
    if (is_large_enough)
        std::fill_n(table.states, std::min(words.first_free_index, table.size), hard_index);
}

void CLUT_alloc(int32_t index)
{
    require(words.initialised, 167);
    require(words.static_phase, 168);
    if (is_outside(index))
        return;
    require(table.states[index] == free_index, 169);
    set_state(index, hard_index, "CLUT alloc %d\n");
}

int32_t CLUT_new_index(void)
{
    debug_break();
    require(words.initialised, 186);
    if (words.static_phase && !reserve_dirty_index())
        return 0;
    const int32_t index = take_index();
    if (is_outside(index))
        return 0;
    set_state(index, dynamic_index, "new index : %d\n"); /* 5 */
    warn_when_full(index);
    return index;
}

void CLUT_release_index(int32_t index)
{
    debug_break();
    require(words.initialised, 240);
    if (is_outside(index))
        return;
    require(table.states[index] == dynamic_index, 241);
    if (index == table.dirty_index)
        return;
    set_state(index, free_index, "free index : %d\n");                /* 6 */
    words.first_free_index = std::min(words.first_free_index, index); /* 7 */
}

void CLUT_set(int32_t index, int16_t red, int16_t green, int16_t blue)
{
    require(words.initialised, 265);
    require(index < table.size, 266);
    if (is_outside(index))
        return;
    if (table.states[index] != free_index)
        return tell_and_store(index, red, green, blue);
    CLUT_alloc(index);
    mova::or_undo([=] { tell_and_store(index, red, green, blue); }, [=] { put_back(index, free_index); });
}

void CLUT_set_RGB(int32_t index, float red, float green, float blue)
{
    CLUT_set(index, component(red), component(green), component(blue));
}

void CLUT_get(int32_t index, int16_t *red, int16_t *green, int16_t *blue)
{
    require(words.initialised, 284);
    if (index >= table.size) {
        *red = *green = *blue = 255;
        return;
    }
    if (is_outside(index))
        return;
    const colour found = table.colours[index];
    *red = found.red;
    *green = found.green;
    *blue = found.blue;
    if (clut_debug >= 2)
        mova_dprintf("get index : %d : %d %d %d\n", index, found.red, found.green, found.blue);
}

void CLUT_copy(int32_t destination, int32_t source)
{
    require(words.initialised, 300);
    require(destination < table.size && source < table.size, 302);
    if (is_outside(destination) || is_outside(source))
        return;
    require(table.states[destination] != free_index && table.states[source] != free_index, 303);
    const colour copied = table.colours[source];
    if (table.callback)
        store_and(destination, copied, [=] { table.callback(destination, copied.red, copied.green, copied.blue); });
    else
        table.colours[destination] = copied;
}

void CLUT_statistics(void)
{
    int32_t counts[3] = {};
    for (int32_t index = 1; index <= table.size; ++index) {
        assert(is_state(table.states[index])); /* invariants 1 and 2 */
        ++counts[table.states[index]];
    }
    mova_dprintf("Clut Size : %d\n", table.size);
    mova_dprintf("First Free index : %d\n", words.first_free_index);
    mova_dprintf("Dirty index : %d\n", table.dirty_index);
    mova_dprintf("Number of free indices : %d\n", counts[free_index]);
    mova_dprintf("Number of hard indices : %d\n", counts[hard_index]);
    mova_dprintf("Number of dynamic indices : %d\n", counts[dynamic_index]);
}
