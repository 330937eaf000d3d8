/* SPDX-License-Identifier: MIT */
#ifndef MOVA_TESTS_MODEL_EXPECTED_CALLS_H
#define MOVA_TESTS_MODEL_EXPECTED_CALLS_H

#include <tests/support/byte_source.h>
#include <tests/support/recording_host.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace mova::test {

/* The host calls and callbacks that an interpreter's model says must have been made since the last comparison. Resets the
   recording host when it is made. */
class expected_calls {
public:
    expected_calls() { host_.reset(); }

    void call(std::string text) { calls_.push_back(std::move(text)); }

    /* Returns the number of the block. */
    int alloc(std::size_t size)
    {
        call("alloc " + std::to_string(size) + " = #" + std::to_string(++blocks_));
        return blocks_;
    }

    void dealloc(const void *block, std::size_t size)
    {
        call("dealloc " + host_.name_of(block) + " " + std::to_string(size));
    }

    void dealloc(int block, std::size_t size)
    {
        call("dealloc #" + std::to_string(block) + " " + std::to_string(size));
    }

    /* `old_name` is what the host calls the block that dies. */
    void realloc(const std::string &old_name, std::size_t old_size, std::size_t new_size)
    {
        call("realloc " + old_name + " " + std::to_string(old_size) + " -> " + std::to_string(new_size) + " = #" +
             std::to_string(++blocks_));
    }

    /* A block that is released in the same call. */
    void buffer(std::size_t size) { dealloc(alloc(size), size); }

    void raise(const std::string &module, int32_t line, int32_t code)
    {
        call("raise " + module + " " + std::to_string(line) + " " + std::to_string(code));
    }

    /* Throws mismatch where other calls were made. */
    void compare()
    {
        std::vector<std::string> log = host_.take_log();
        for (std::size_t i = 0; i < std::min(log.size(), calls_.size()); ++i)
            require(log[i] == calls_[i], "called " + log[i] + " instead of " + calls_[i]);
        require(log.size() == calls_.size(), "another number of calls");
        calls_.clear();
    }

    /* Makes a call in which the library raises, or does not, and has raises thrown or returned from. Throws mismatch where
       it did otherwise. Returns whether the call returned. */
    template <class Call>
    bool returns_from(bool raises, bool throws, Call make_call)
    {
        host_.set_raise_mode(throws ? recording_host::raise_mode::throws : recording_host::raise_mode::returns);
        bool thrown = false;
        try {
            make_call();
        } catch (const raised &) {
            thrown = true;
        }
        host_.set_raise_mode(recording_host::raise_mode::throws);
        require(thrown == (raises && throws), "raised, or did not");
        return !thrown;
    }

    /* To be asked at the end: everything was released, and rightly. */
    void require_nothing_left()
    {
        compare();
        require(host_.live_blocks() == 0, "blocks are left");
        require(host_.take_complaints().empty(), "the host complained");
    }

private:
    recording_host &host_ = recording_host::get();
    std::vector<std::string> calls_;
    int blocks_ = 0;
};

} // namespace mova::test

#endif
