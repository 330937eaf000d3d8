/* SPDX-License-Identifier: MIT */
/* An interpreter turns bytes into operations on one family, runs them beside a plain model, and compares the two after
   every operation. It runs on the recording host, and throws mismatch at the first difference. Each registers itself in
   one call; the model tests give it random bytes, a fuzzer gives it those that lead somewhere new. */
#ifndef MOVA_TESTS_MODEL_MODEL_H
#define MOVA_TESTS_MODEL_MODEL_H

#include <tests/support/byte_source.h>
#include <tests/support/recording_host.h>

#include <algorithm>
#include <string>

namespace mova::test {

/* So many sequences of so many random bytes. */
struct random_runs {
    uint32_t count;
    std::size_t length;
};

struct model {
    std::string family; /* as cmake/families.cmake names it */
    void (*run)(std::span<const uint8_t> bytes);
    random_runs long_runs;
    random_runs short_runs; /* which stay near the empty container */
};

/* Registers a model. The result means nothing: it lets a constant be initialised with the call. */
bool add_model(model added);

const std::vector<model> &models();
const model &model_of(const std::string &family);

/* The frame of every interpreter. Compares before the first operation and after each, until the bytes are used up. */
class byte_interpreter {
public:
    explicit byte_interpreter(byte_source bytes) : bytes_(bytes) {}
    virtual ~byte_interpreter() = default;

    /* By all of them. */
    static inline uint64_t operations_done = 0;

    void run()
    {
        compare();
        while (!bytes_.empty()) {
            operate();
            compare();
            ++operations_done;
        }
        finish();
    }

protected:
    /* Does what the next bytes say. */
    virtual void operate() = 0;

    /* Throws mismatch where container and model differ. */
    virtual void compare() = 0;

    /* Releases what is left, and sees that it is all. */
    virtual void finish() = 0;

    template <class Interpreter, std::size_t count>
    void do_one_of(void (Interpreter::*const (&operations)[count])())
    {
        (static_cast<Interpreter &>(*this).*operations[bytes_.below(count)])();
    }

    byte_source bytes_;
};

/* Sorts by insertion: equal ones stay in order. (The standard library's own makes clang 19 warn of libstdc++ 12.) */
template <class Iterator, class Less>
void sort_stably(Iterator begin, Iterator end, Less less)
{
    for (Iterator next = begin; next != end; ++next)
        std::rotate(std::upper_bound(begin, next, *next, less), next, next + 1);
}

/* Whether the interpreters call the exported functions, not the bodies that some have in the headers. */
inline bool calls_exported_form = false;

/* The last byte chooses the form: hardly an interpreter sees that one. */
template <class Interpreter>
void run_interpreter(std::span<const uint8_t> bytes)
{
    calls_exported_form = !bytes.empty() && bytes.back() % 2 != 0;
    Interpreter(byte_source(bytes)).run();
    require(recording_host::get().live_blocks() == 0, "memory is left");
}

} // namespace mova::test

#endif
