/* SPDX-License-Identifier: MIT */
#include "trace.h"

#include <tests/support/colour_table_start.h>
#include <tests/support/recording_host.h>

#include <algorithm>
#include <bit>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <utility>

namespace mova::test {

namespace {

/* Where it is larger, a word is an address, or a pattern that is as wide as the word. */
constexpr int64_t most_of_a_number = 0xffffff;

constexpr int64_t of_null = -1, of_released = -2, of_nan = -3, of_word = -4, first_name = int64_t{1} << 32;

} // namespace

void trace::begin_run()
{
    names_.clear();
    words_.clear();
    others_ = 0;
}

std::size_t trace::host_calls_so_far()
{
    return recording_host::get().log().size();
}

/* A call in the host's log begins with what it does. Its numbers that are sizes of blocks, and addresses in texts, are left
   out: a text shows them with capital digits. */
void trace::host_calls_since(std::size_t first)
{
    const std::vector<std::string> &log = recording_host::get().log();
    for (std::size_t i = first; i < log.size(); ++i) {
        const std::string &call = log[i];
        const bool is_of_memory =
            call.starts_with("alloc ") || call.starts_with("dealloc ") || call.starts_with("realloc ");
        std::size_t start = 0;
        while (start < call.size()) {
            const std::size_t end = std::min(call.find_first_of(" \n", start), call.size());
            const std::string_view part = std::string_view(call).substr(start, end - start);
            const bool is_size = is_of_memory && std::isdigit(static_cast<unsigned char>(call[start]));
            const bool is_address =
                part.size() > 4 && part.find_first_not_of("0123456789ABCDEF") == std::string_view::npos;
            if (!part.empty() && !is_size && !is_address)
                put_text(part);
            start = end + 1;
        }
    }
}

void trace::begin_call(std::string_view function)
{
    put_text(function);
}

/* The records stand in the order in which they were reached, each before those that it leads to. */
void trace::end_call()
{
    put_text("|");
    for (std::size_t i = 0; i < waiting_.size(); ++i)
        waiting_[i].show(*this, waiting_[i].record);
    waiting_.clear();
    for (const standard_colour &standard : standard_colours) {
        if (*standard.word)
            put(*standard.word);
    }
    ++calls_;
    if (prints_)
        std::puts(std::exchange(line_, {}).c_str());
}

bool trace::note_reached(const void *record)
{
    if (!record)
        return false;
    if (std::exchange(names_[reinterpret_cast<uintptr_t>(record)].reached_in, calls_ + 1) == calls_ + 1)
        return false;
    const recording_host::place place = recording_host::get().place_of(record);
    if (place.number && !place.is_live)
        put(of_released);
    return !place.number || place.is_live;
}

int64_t trace::name_of(uint64_t address)
{
    int64_t &number = names_[address].number;
    if (number == 0) {
        number = recording_host::get().place_of(reinterpret_cast<void *>(static_cast<uintptr_t>(address))).number;
        if (number == 0)
            number = first_name + others_++;
    }
    return number;
}

/* By chance it may be an address as well. */
int64_t trace::name_of_word(uint64_t word)
{
    return words_.try_emplace(word, first_name - 1 - static_cast<int64_t>(words_.size())).first->second;
}

void trace::put(int64_t number)
{
    if (prints_)
        line_ += ' ' + std::to_string(number);
    digest_ = (digest_ ^ static_cast<uint64_t>(number)) * 0x9e3779b97f4a7c15;
    digest_ ^= digest_ >> 29;
}

void trace::put_text(std::string_view text)
{
    if (prints_)
        (line_ += ' ') += text;
    for (const char letter : text)
        digest_ = (digest_ ^ static_cast<unsigned char>(letter)) * 0x100000001b3;
}

void trace::put_address(const void *address)
{
    put(address ? name_of(reinterpret_cast<uintptr_t>(address)) : of_null);
}

void trace::put_word(int64_t word)
{
    const bool is_number = word >= -most_of_a_number && word <= most_of_a_number;
    put(is_number ? word : name_of_word(static_cast<uint64_t>(word)));
}

/* Of elements: those of a word's size are as large here and elsewhere. */
void trace::put_size(std::size_t size)
{
    put(size == sizeof(uint32_t) || size == sizeof(uint64_t) ? of_word : static_cast<int64_t>(size));
}

/* What a machine reads as one number stands as a name, for the order of its bytes may mean nothing, and may not be the
   caller's. One NaN is as good as another. */
void trace::put_elements(const void *first, std::size_t size, std::size_t count)
{
    const auto *bytes = static_cast<const unsigned char *>(first);
    for (const unsigned char *element = bytes; element != bytes + size * count; element += size) {
        if (size == sizeof(uint32_t)) {
            uint32_t bits;
            put_bits((std::memcpy(&bits, element, size), bits));
        } else if (size == sizeof(uint64_t)) {
            uint64_t bits;
            put_bits((std::memcpy(&bits, element, size), bits));
        } else {
            for (std::size_t i = 0; i < size; ++i)
                put(element[i]);
        }
    }
}

void trace::put_bits(uint64_t bits)
{
    const bool is_nan = std::isnan(std::bit_cast<double>(bits));
    put(bits == 0 ? 0 : is_nan ? of_nan : name_of_word(bits));
}

void trace::fields_of(const GL_node &node)
{
    fields(node.prev, node.next, node.item);
}

void trace::fields_of(const GL_list &list)
{
    fields(list.first, list.last, list.count);
}

void trace::fields_of(const GL_iterator &iterator)
{
    fields(iterator.current, iterator.next, iterator.end, iterator.forward, iterator.test);
}

void trace::fields_of(const EL_node &node)
{
    fields(node.prev, node.next);
    put_elements(&node + 1, recording_host::get().place_of(&node + 1).bytes_left, 1);
}

void trace::fields_of(const EL_list &list)
{
    put_size(list.element_size);
    fields(list.first, list.last, list.count, list.closed);
}

void trace::fields_of(const EL_iterator &iterator)
{
    fields(iterator.current, iterator.next, iterator.end, iterator.forward, iterator.test);
    put_size(iterator.element_size);
}

/* The nodes are items of the caller's, which begin with the links. */
void trace::fields_of(const SL_list &list)
{
    fields(list.first, list.last, list.count, list.closed);
    const void *item = list.first;
    for (int32_t i = 0; i < list.count; ++i) {
        const auto *links = static_cast<const mova_sl_links *>(item);
        put_address(links->prev);
        put_address(item = links->next);
    }
}

void trace::fields_of(const SL_iterator &iterator)
{
    fields(iterator.current, iterator.upcoming, iterator.end, iterator.forward, iterator.test);
}

void trace::fields_of(const GB_block &block)
{
    put_size(block.element_size);
    fields(block.data, block.count, block.capacity, block.increment, block.closed);
    if (block.data)
        put_elements(block.data, block.element_size, static_cast<std::size_t>(block.count));
}

void trace::fields_of(const DA_array &array)
{
    put_size(array.element_size);
    fields(array.increment, array.nalloc, array.nitems, array.data);
    if (array.data)
        put_elements(array.data, array.element_size, static_cast<std::size_t>(array.nitems));
}

void trace::fields_of(const DA_iterator &iterator)
{
    fields(iterator.array, iterator.forward, iterator.current, iterator.last, iterator.test);
}

void trace::fields_of(const io_lut_iterator &iterator)
{
    fields(iterator.storage, iterator.count, iterator.next);
}

void trace::fields_of(const GT_tree_item &node)
{
    fields(node.item, node.left, node.right, node.prev, node.next, node.balance);
}

void trace::fields_of(const GT_tree &tree)
{
    fields(tree.root, tree.first, tree.last, tree.compare, tree.dupl_allowed, tree.iterators);
}

void trace::fields_of(const GT_tree_iter &iterator)
{
    fields(iterator.cursor, iterator.current, iterator.tree, iterator.condition, iterator.mode);
}

void trace::fields_of(const HSH_table &table)
{
    fields(table.minimum_size, table.capacity, table.count, table.low_water_mark, table.high_water_mark, table.mask,
           table.shift, table.maximum_shift, table.keys, table.values);
    for (int32_t slot = 0; slot < table.capacity; ++slot) {
        put_word(table.keys[slot]);
        put_word(table.keys[slot] ? table.values[slot] : 0);
    }
}

void trace::fields_of(const HSH_iterator &iterator)
{
    fields(iterator.table, iterator.index);
}

void trace::fields_of(const mova_lookup &lookup)
{
    fields(lookup.front_key, lookup.front_value, lookup.table);
}

void trace::fields_of(const cc_entry &entry)
{
    fields(entry.prev, entry.next, entry.item, entry.handle, entry.size_fn, entry.swap_in_fn, entry.write_back_fn,
           entry.release_fn, entry.status);
}

void trace::fields_of(const cc_cache &cache)
{
    fields(cache.first, cache.last, cache.pool);
}

} // namespace mova::test
