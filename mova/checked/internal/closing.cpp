/* SPDX-License-Identifier: MIT */
#include "closing.h"

#include "blocks.h"
#include "report.h"
#include "symbols.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace mova::checked {

namespace {

/* What was made at one place and lives. */
struct group {
    const char *what; /* "list" */
    const char *of;   /* "", or " iterator" */
    place made;
    size_t count, bytes;
};

/* Of more places than these the others go together. */
class groups {
public:
    void add(const char *what, const char *of, place made, size_t bytes)
    {
        const group sought = {what, of, made, 1, bytes};
        group *const end = groups_ + used_;
        group *const found = std::find_if(groups_, end, [&](const group &known) {
            return known.made == made && known.what == what && known.of == of;
        });
        if (found != end) {
            ++found->count;
            found->bytes += bytes;
        } else if (used_ < most) {
            groups_[used_++] = sought;
        } else {
            ++beyond_;
        }
    }

    void print()
    {
        if (used_ == 0)
            return;
        std::sort(groups_, groups_ + used_, [](const group &a, const group &b) {
            return a.count != b.count ? a.count > b.count : a.made < b.made;
        });
        write_out("mova: what is left, and where it was made\n");
        for (size_t i = 0; i < used_; ++i)
            print(groups_[i]);
        if (beyond_ != 0) {
            char line[64];
            std::snprintf(line, sizeof line, "  %6zu made elsewhere\n", beyond_);
            write_out(line);
        }
    }

private:
    static void print(const group &shown)
    {
        const source_place made = source_of(shown.made);
        char what[64], line[320];
        if (shown.bytes != 0)
            std::snprintf(what, sizeof what, "%s, %zu bytes", shown.what, shown.bytes);
        else
            std::snprintf(what, sizeof what, "%s%s", shown.what, shown.of);
        std::snprintf(line, sizeof line, "  %6zu %-25s %-33s %s\n", shown.count, what, made.function, made.line);
        write_out(line);
    }

    static constexpr size_t most = 1024;

    group groups_[most];
    size_t used_ = 0, beyond_ = 0;
};

struct inventory {
    groups by_place;
    tally count = {};
};

inventory left;

/* Nodes and storage go with their container. */
void note_entry(const void *, const entry &known, void *)
{
    ++(known.what == kind::head ? left.count.containers : left.count.blocks);
    if (known.owner == 0 || known.what == kind::block || known.what == kind::item)
        return;
    const owner &of = owner_at(resolved(known.owner));
    if (known.what == kind::head)
        left.by_place.add(of.of->noun, "", of.made, 0);
    else
        left.by_place.add(of.of->noun, " iterator", known.last_place, 0);
}

/* A block is a container's, or the program's own. */
void note_block(const void *block, size_t size, const void *made, const entry &noted, void *)
{
    if (noted.known && noted.live)
        return note_entry(block, noted, nullptr);
    ++left.count.blocks;
    left.by_place.add("block", "", made, size);
}

} // namespace

tally close_program(bool lists_leaks)
{
    if (mova_checked_judge_blocks)
        mova_checked_judge_blocks();
    {
        const registry_lock lock;
        for_each_live_elsewhere(note_entry, nullptr);
        if (mova_checked_visit_blocks)
            mova_checked_visit_blocks(note_block, nullptr);
    }
    if (lists_leaks)
        left.by_place.print();
    return left.count;
}

} // namespace mova::checked
