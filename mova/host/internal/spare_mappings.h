/* SPDX-License-Identifier: MIT */
/* Mappings of the classes' sizes that are not in use: those of late, kept for the next of their size; and those that the
   system does not take back.

       give -> | oldest | ... | newest | -> take        kept: as they were
                   |
                   v  too many, or kept too long
              to the system, or, emptied, to a shelf -> take

   Each mapping may be one more that the system keeps apart from its neighbours, and it keeps a limited number (65,530 is
   usual on Linux). Where many are mapped, those that would go back are therefore emptied and laid on a shelf of their class:
   all but their first page, which holds the shelf together. When few enough are in use again, whole rows of neighbours go
   back from the shelves at once.

   A mapping for which huge pages were asked keeps them for its next user, kept or on a shelf: refused for some of them, the
   system would have to keep these apart from their neighbours.

   Invariants:
     1. `kept_` holds `kept_count_` mappings, in the order in which they came, and `kept_bytes_` is the sum of their sizes.
     2. They are at most `most_kept`, and take less than `most_bytes_` together, or are a single one.
     3. `mapped_` is the number of mappings that are in use, kept, or on a shelf, and `shelved_` the number of the last. */
#ifndef MOVA_HOST_INTERNAL_SPARE_MAPPINGS_H
#define MOVA_HOST_INTERNAL_SPARE_MAPPINGS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <new>
#include <utility>

#include <mova/host/internal/mappings.h>
#include <mova/host/internal/size_classes.h>

namespace mova {

class spare_mappings {
public:
    static constexpr size_t most_kept = 128;
    static constexpr uint32_t kept_for = 1000; /* milliseconds */

    constexpr spare_mappings(mappings &from, size_t most_bytes, size_t alignment)
        : mappings_(from), most_bytes_(most_bytes), alignment_(alignment)
    {
    }

    struct taken {
        void *start;
        bool fresh; /* it has never been used: every byte is 0 */
    };

    /* Returns a mapping of a class, the one that was in use last where any is kept. Null where memory has run out. */
    taken take(unsigned index)
    {
        taken result = {take_kept(index), false};
        if (!result.start)
            result.start = take_shelved(index);
        if (!result.start)
            result = {map(index), true};
        in_use_ += result.start != nullptr;
        return result;
    }

    void give(unsigned index, void *start)
    {
        --in_use_;
        if (size_of(index) > most_bytes_)
            return let_go({start, index, 0});
        kept_[kept_count_++] = {start, index, mappings_.now()};
        kept_bytes_ += size_of(index);
        while (kept_count_ > most_kept || (kept_bytes_ >= most_bytes_ && kept_count_ > 1))
            let_go(take_oldest());
        clear_shelves_once();
    }

    /* Gives back what was kept too long. */
    void age()
    {
        if (kept_count_ == 0)
            return;
        for (const uint32_t now = mappings_.now(); kept_count_ > 0 && now - kept_[0].since > kept_for;)
            let_go(take_oldest());
    }

    /* Gives back all that can be. Returns whether anything was. */
    bool trim()
    {
        const size_t before = mapped_;
        while (kept_count_ > 0)
            let_go(take_oldest());
        clear_shelves();
        return mapped_ < before;
    }

    size_t in_use() const { return in_use_; }

private:
    static constexpr size_t most_mapped = 8192;
    static constexpr unsigned first_class = size_classes::run_classes;
    static constexpr size_t system_page = 4096;

    struct kept_mapping {
        void *start;
        unsigned index;
        uint32_t since;
    };

    /* What stands in the first page of a mapping on a shelf. */
    struct shelved_mapping {
        shelved_mapping *next;
    };

    static constexpr size_t size_of(unsigned index) { return size_classes::block_size(index); }
    shelved_mapping *&shelf(unsigned index) { return shelves_[index - first_class]; }

    void *map(unsigned index)
    {
        void *start = mappings_.map_aligned(size_of(index), alignment_);
        mapped_ += start != nullptr;
        return start;
    }

    void *take_kept(unsigned index)
    {
        for (size_t i = kept_count_; i-- > 0;) {
            if (kept_[i].index == index)
                return take_out(i).start;
        }
        return nullptr;
    }

    kept_mapping take_oldest() { return take_out(0); }

    kept_mapping take_out(size_t at)
    {
        const kept_mapping out = kept_[at];
        std::copy(kept_ + at + 1, kept_ + kept_count_, kept_ + at);
        --kept_count_;
        kept_bytes_ -= size_of(out.index);
        return out;
    }

    void *take_shelved(unsigned index)
    {
        shelved_mapping *first = shelf(index);
        if (!first)
            return nullptr;
        shelf(index) = first->next;
        --shelved_;
        return first;
    }

    /* To the system, if that takes it and has not too many mappings already; else to its shelf. */
    void let_go(kept_mapping released)
    {
        if (mapped_ <= most_mapped && mappings_.unmap(released.start, size_of(released.index))) {
            --mapped_;
            return;
        }
        mappings_.purge(static_cast<char *>(released.start) + system_page, size_of(released.index) - system_page);
        lay_on_shelf(released.index, released.start, 1);
    }

    /* When half as many mappings are in use as may be mapped, and again whenever that has halved: a system that refused is
       not asked each time. */
    void clear_shelves_once()
    {
        if (mapped_ > most_mapped)
            clear_at_ = most_mapped / 2;
        if (shelved_ == 0 || in_use_ > clear_at_)
            return;
        clear_at_ = in_use_ / 2;
        clear_shelves();
    }

    void clear_shelves()
    {
        for (unsigned index = first_class; index < size_classes::all_classes; ++index) {
            if (shelf(index))
                clear_shelf(index);
        }
    }

    /* Gives a shelf's mappings back, those that lie side by side with one call: then the system never has to keep more
       pieces apart than are in use. What it refuses lies on the shelf again. */
    void clear_shelf(unsigned index)
    {
        shelved_mapping *rest = sorted(std::exchange(shelf(index), nullptr));
        while (rest) {
            shelved_mapping *first = rest;
            size_t count = 1;
            for (char *end = address(first) + size_of(index); (rest = rest->next) && address(rest) == end; ++count)
                end += size_of(index);
            shelved_ -= count;
            if (mappings_.unmap(first, count * size_of(index)))
                mapped_ -= count;
            else
                lay_on_shelf(index, first, count);
        }
    }

    void lay_on_shelf(unsigned index, void *start, size_t count)
    {
        for (char *each = static_cast<char *>(start); count-- > 0; each += size_of(index)) {
            shelf(index) = new (each) shelved_mapping{shelf(index)};
            ++shelved_;
        }
    }

    static char *address(shelved_mapping *of) { return reinterpret_cast<char *>(of); }

    /* The mappings of a list that is not empty, in order of address: each half is put in order, and they are merged. */
    static shelved_mapping *sorted(shelved_mapping *list)
    {
        if (!list->next)
            return list;
        shelved_mapping *middle = list;
        for (shelved_mapping *end = list->next; end && end->next; end = end->next->next)
            middle = middle->next;
        shelved_mapping *second = sorted(std::exchange(middle->next, nullptr));
        return merged(sorted(list), second);
    }

    static shelved_mapping *merged(shelved_mapping *one, shelved_mapping *other)
    {
        shelved_mapping *first = nullptr, **last = &first;
        while (one && other) {
            shelved_mapping *&less = std::less<>()(one, other) ? one : other;
            *last = less;
            last = &less->next;
            less = less->next;
        }
        *last = one ? one : other;
        return first;
    }

    mappings &mappings_;
    size_t most_bytes_, alignment_;
    kept_mapping kept_[most_kept + 1] = {};
    shelved_mapping *shelves_[size_classes::all_classes - first_class] = {};
    size_t kept_count_ = 0, kept_bytes_ = 0, mapped_ = 0, shelved_ = 0, in_use_ = 0, clear_at_ = most_mapped / 2;
};

} // namespace mova

#endif
