/* SPDX-License-Identifier: MIT */
/* What a model test runs on: bytes that become operations. Random bytes with a seed in the ordinary tests, a fuzzer's
   bytes elsewhere; or, where every small case is tried, the answers of a script. */
#ifndef MOVA_TESTS_SUPPORT_BYTE_SOURCE_H
#define MOVA_TESTS_SUPPORT_BYTE_SOURCE_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace mova::test {

/* What an interpreter throws where the container and its model differ. */
struct mismatch : std::runtime_error {
    using std::runtime_error::runtime_error;
};

inline void require(bool holds, const std::string &what)
{
    if (!holds)
        throw mismatch(what);
}

/* Answers what is drawn of it, and remembers how many answers there were each time. So all that can follow is tried:

       do {
           choices.begin();
           … draws, as many as it likes, of numbers that may depend on the answers before …
       } while (choices.advance());                                                                     */
class choice_script {
public:
    using answers = std::vector<uint8_t>;

    /* Draws begin again at the script's start; past its end they are answered with 0. */
    void begin() { next_ = 0; }
    void begin(const answers &given)
    {
        choices_.clear();
        for (const uint8_t answer : given)
            choices_.push_back({answer, 0});
        next_ = 0;
    }

    std::size_t draw(std::size_t bound)
    {
        require(bound > 0 && bound <= 256, "nothing to choose from");
        if (next_ == choices_.size())
            choices_.push_back({0, bound});
        choice &drawn = choices_[next_++];
        require(drawn.bound == 0 || drawn.bound == bound, "the same state offers another choice");
        drawn.bound = bound;
        require(drawn.answer < bound, "the same state offers fewer choices");
        return drawn.answer;
    }

    /* The next script, of those that begin alike the one whose last answer can be raised. False after the last. */
    bool advance()
    {
        while (!choices_.empty() && choices_.back().answer + 1u == choices_.back().bound)
            choices_.pop_back();
        if (choices_.empty())
            return false;
        ++choices_.back().answer;
        return true;
    }

    answers taken() const
    {
        answers all;
        for (const choice &each : choices_)
            all.push_back(each.answer);
        return all;
    }

private:
    struct choice {
        uint8_t answer;
        std::size_t bound; /* 0 as long as it was not asked */
    };

    std::vector<choice> choices_;
    std::size_t next_ = 0;
};

class byte_source {
public:
    explicit byte_source(std::span<const uint8_t> bytes) : bytes_(bytes) {}
    explicit byte_source(choice_script &script) : script_(&script) {}

    bool empty() const { return bytes_.empty(); }

    /* Whether every answer is tried: then there should be few. */
    bool is_exhaustive() const { return script_ != nullptr; }

    /* The next byte; 0 when there is none left. */
    uint8_t next()
    {
        if (script_)
            return static_cast<uint8_t>(script_->draw(2));
        if (bytes_.empty())
            return 0;
        uint8_t byte = bytes_.front();
        bytes_ = bytes_.subspan(1);
        return byte;
    }

    /* A number below `bound`, which is at most 256. */
    std::size_t below(std::size_t bound) { return script_ ? script_->draw(bound) : next() % bound; }

    /* The same; where every answer is tried, below `few` too. */
    std::size_t below(std::size_t bound, std::size_t few) { return below(script_ ? std::min(bound, few) : bound); }

    /* A number from `first` to `last`; where every answer is tried, from `first_of_few` to `last_of_few`. */
    int32_t between(int32_t first, int32_t last, int32_t first_of_few, int32_t last_of_few)
    {
        return script_ ? between(first_of_few, last_of_few) : between(first, last);
    }
    int32_t between(int32_t first, int32_t last)
    {
        return first + static_cast<int32_t>(below(static_cast<std::size_t>(last - first) + 1));
    }

private:
    std::span<const uint8_t> bytes_;
    choice_script *script_ = nullptr;
};

/* The seed of a random test: MOVA_TEST_SEED where it is set, else `standard`. */
inline uint32_t test_seed(uint32_t standard)
{
    const char *given = std::getenv("MOVA_TEST_SEED");
    return given ? static_cast<uint32_t>(std::strtoul(given, nullptr, 0)) : standard;
}

inline std::vector<uint8_t> random_bytes(uint32_t seed, std::size_t count)
{
    std::mt19937 engine(seed);
    std::vector<uint8_t> bytes(count);
    for (uint8_t &byte : bytes)
        byte = static_cast<uint8_t>(engine() >> 24);
    return bytes;
}

} // namespace mova::test

#endif
