/* SPDX-License-Identifier: MIT */
/* An interpreter turns bytes into operations on one family, runs them beside a plain model, and compares the two after
   every operation. It runs on the recording host, and throws mismatch at the first difference. Each registers itself in
   one call; the model tests give it random bytes, a fuzzer gives it those that lead somewhere new. */
#ifndef MOVA_TESTS_MODEL_MODEL_H
#define MOVA_TESTS_MODEL_MODEL_H

#include <tests/support/byte_source.h>
#include <tests/support/recording_host.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>

namespace mova::test {

/* So many sequences of so many random bytes. */
struct random_runs {
    uint32_t count;
    std::size_t length;
};

class byte_interpreter;

/* How large containers become where every small case is tried: in a short run and in the whole one. */
struct small_bounds {
    std::size_t brief, full;
};

struct model {
    std::string family; /* as cmake/families.cmake names it */
    void (*run)(std::span<const uint8_t> bytes);
    std::unique_ptr<byte_interpreter> (*create)(byte_source bytes);
    random_runs long_runs;
    random_runs short_runs; /* which stay near the empty container */
    small_bounds small;
};

/* Registers a model. The result means nothing: it lets a constant be initialised with the call. */
bool add_model(model added);
template <class Interpreter>
bool add_model(const std::string &family, random_runs long_runs, random_runs short_runs, small_bounds small);

const std::vector<model> &models();
const model &model_of(const std::string &family);

/* What makes two states of an interpreter differ, in small numbers. */
class state_text {
public:
    template <class... Numbers>
    void add(const Numbers &...numbers)
    {
        (add_one(static_cast<int64_t>(numbers)), ...);
    }

    const std::string &text() const { return text_; }

private:
    void add_one(int64_t number)
    {
        const bool is_short = number >= -100 && number <= 100;
        text_ += is_short ? static_cast<char>(number) : '\x7f';
        for (int shift = 0; !is_short && shift < 64; shift += 8)
            text_ += static_cast<char>(static_cast<uint64_t>(number) >> shift);
    }

    std::string text_;
};

/* The frame of every interpreter. Compares before the first operation and after each, until the bytes are used up. */
class byte_interpreter {
public:
    explicit byte_interpreter(byte_source bytes) : bytes_(bytes) {}
    virtual ~byte_interpreter() = default;

    /* By all of them. */
    static inline uint64_t operations_done = 0;

    /* Begins; what draws from the bytes is done by then, or in it. */
    virtual void begin() {}

    void run()
    {
        begin();
        compare();
        while (!bytes_.empty()) {
            operate();
            compare();
            ++operations_done;
        }
        finish();
    }

    /* Does what the next bytes say. */
    virtual void operate() = 0;

    /* Throws mismatch where container and model differ. */
    virtual void compare() = 0;

    /* Releases what is left, and sees that it is all. */
    virtual void finish() = 0;

    /* Describes the model where each small case is tried: states that are described alike are taken for one, and addresses
       are no part of it. Returns whether it is no larger than `most`. */
    virtual bool describe(state_text &state, std::size_t most) const = 0;

protected:
    /* Some stand in the table more than once, to be drawn more often. */
    template <class Interpreter, std::size_t count>
    void do_one_of(void (Interpreter::*const (&operations)[count])())
    {
        void (Interpreter::*operation)();
        if (bytes_.is_exhaustive()) {
            static const auto different = once_each(operations);
            operation = different[bytes_.below(different.size())];
        } else {
            operation = operations[bytes_.below(count)];
        }
        (static_cast<Interpreter &>(*this).*operation)();
    }

    template <class Operation, std::size_t count>
    static std::vector<Operation> once_each(Operation const (&operations)[count])
    {
        std::vector<Operation> different;
        for (Operation each : operations) {
            if (std::find(different.begin(), different.end(), each) == different.end())
                different.push_back(each);
        }
        return different;
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

template <class Interpreter>
bool add_model(const std::string &family, random_runs long_runs, random_runs short_runs, small_bounds small)
{
    const auto create = [](byte_source bytes) -> std::unique_ptr<byte_interpreter> {
        return std::make_unique<Interpreter>(bytes);
    };
    return add_model({family, run_interpreter<Interpreter>, create, long_runs, short_runs, small});
}

} // namespace mova::test

#endif
