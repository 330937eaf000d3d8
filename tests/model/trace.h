/* SPDX-License-Identifier: MIT */
/* All that can be seen of a run of an interpreter, as one number that is the same on every machine: of every call its
   function, what it was given and what it answers, its host calls and callbacks, and then the fields of every record that
   can be reached from what it was given.

   An address stands as the number of its block, or as how many other addresses were seen before it. Left out is what the
   width or the byte order of a word changes, and the models compare: sizes of blocks, places inside of them, and bytes that
   are parts of words. */
#ifndef MOVA_TESTS_MODEL_TRACE_H
#define MOVA_TESTS_MODEL_TRACE_H

#include <mova/container.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace mova::test {

class trace {
public:
    /* The one that is written to now, or null. */
    static inline trace *current = nullptr;

    /* With `prints`, each call is a line on stdout too. */
    explicit trace(bool prints) : prints_(prints) {}

    uint64_t digest() const { return digest_; }

    /* An interpreter begins: addresses are new. */
    void begin_run();

    void begin_call(std::string_view function);
    void end_call();

    /* Of what a call is given by address, only whether there is one: it is looked at after the call. */
    template <class Value>
    void argument(const Value &value)
    {
        if constexpr (std::is_pointer_v<Value>)
            put(value != nullptr);
        else
            result(value);
    }

    template <class Value>
    void left_at(const Value &argument)
    {
        if constexpr (std::is_pointer_v<Value>) {
            using object = std::remove_pointer_t<Value>;
            if constexpr (is_record<object>)
                reach(argument);
            else if constexpr (std::is_scalar_v<object> && !std::is_const_v<object>) {
                if (argument)
                    output(*argument);
            }
        }
    }

    template <class Value>
    void result(const Value &value)
    {
        if constexpr (is_record<Value>)
            fields_of(value);
        else
            field(value);
    }

    /* Where the host calls and callbacks of a call begin. */
    static std::size_t host_calls_so_far();
    void host_calls_since(std::size_t first);

private:
    /* A pool has no fields that are public. */
    template <class Type>
    static constexpr bool is_record = std::is_class_v<Type> && !std::is_same_v<std::remove_cv_t<Type>, mb_pool>;

    struct name {
        int64_t number = 0;      /* 0 as long as it was not shown */
        uint64_t reached_in = 0; /* the last call in which it was */
    };

    struct waiting_record {
        const void *record;
        void (*show)(trace &, const void *);
    };

    template <class Value>
    void field(const Value &value)
    {
        if constexpr (std::is_floating_point_v<Value>)
            put_elements(&value, sizeof value, 1);
        else if constexpr (!std::is_pointer_v<Value>)
            put_word(static_cast<int64_t>(value));
        else {
            put_address(reinterpret_cast<const void *>(value));
            if constexpr (is_record<std::remove_pointer_t<Value>>)
                reach(value);
        }
    }

    /* What stands in a variable may point to nothing. */
    template <class Value>
    void output(const Value &value)
    {
        if constexpr (std::is_pointer_v<Value>)
            put_address(value);
        else
            field(value);
    }

    template <class... Values>
    void fields(const Values &...values)
    {
        (field(values), ...);
    }

    /* One for each record. */
    void fields_of(const GL_node &node);
    void fields_of(const GL_list &list);
    void fields_of(const GL_iterator &iterator);
    void fields_of(const EL_node &node);
    void fields_of(const EL_list &list);
    void fields_of(const EL_iterator &iterator);
    void fields_of(const SL_list &list);
    void fields_of(const SL_iterator &iterator);
    void fields_of(const GB_block &block);
    void fields_of(const DA_array &array);
    void fields_of(const DA_iterator &iterator);
    void fields_of(const io_lut_iterator &iterator);
    void fields_of(const GT_tree_item &node);
    void fields_of(const GT_tree &tree);
    void fields_of(const GT_tree_iter &iterator);
    void fields_of(const HSH_table &table);
    void fields_of(const HSH_iterator &iterator);
    void fields_of(const mova_lookup &lookup);
    void fields_of(const cc_entry &entry);
    void fields_of(const cc_cache &cache);

    /* Has the record's fields shown, once in a call, where it was not released. */
    template <class Record>
    void reach(const Record *record)
    {
        if (note_reached(record))
            waiting_.push_back({record, [](trace &shown, const void *waited) {
                                    shown.fields_of(*static_cast<const Record *>(waited));
                                }});
    }

    bool note_reached(const void *record);
    int64_t name_of(uint64_t address);
    int64_t name_of_word(uint64_t word);
    void put(int64_t number);
    void put_text(std::string_view text);
    void put_address(const void *address);
    void put_word(int64_t word);
    void put_bits(uint64_t bits);
    void put_size(std::size_t size);
    void put_elements(const void *first, std::size_t size, std::size_t count);

    const bool prints_;
    uint64_t digest_ = 0xcbf29ce484222325, calls_ = 0;
    std::unordered_map<uint64_t, name> names_;
    std::unordered_map<uint64_t, int64_t> words_;
    int64_t others_ = 0; /* of them, not of blocks */
    std::vector<waiting_record> waiting_;
    std::string line_;
};

} // namespace mova::test

#endif
