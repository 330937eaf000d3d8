/* SPDX-License-Identifier: MIT */
/* The symbols of a program with blocks: a name in an inner block hides the one outside until the block ends. */
#include <mova/cxx/element_stack.h>
#include <mova/cxx/keyed_table.h>
#include <cstdio>
#include <string>
#include <string_view>

class symbol_table {
public:
    void begin_block() { declared_.push({nothing, 0}); }

    void declare(std::string_view name, int line)
    {
        const auto [found, is_new] = symbols_.insert({std::string(name), nothing});
        declared_.push({found - symbols_.data(), found->line});
        found->line = line;
    }

    void end_block()
    {
        for (auto last = declared_.pop(); last && last->symbol != nothing; last = declared_.pop())
            symbols_.data()[last->symbol].line = last->line_outside;
    }

    /* The line of the declaration that counts, or `nothing`. */
    int line_of(std::string_view name) const
    {
        const symbol *found = symbols_.find(name);
        return found ? found->line : nothing;
    }

    static constexpr int nothing = -1;

private:
    struct symbol {
        std::string name;
        int line;
    };
    struct declaration {
        std::ptrdiff_t symbol; /* its index, which stays: no symbol is removed. Of a block's begin: nothing */
        int line_outside;
    };
    mova::keyed_table<symbol, &symbol::name> symbols_;
    mova::element_stack<declaration> declared_;
};

int main()
{
    symbol_table symbols;
    const auto print = [&] { std::printf("x: %d, y: %d\n", symbols.line_of("x"), symbols.line_of("y")); };
    symbols.declare("x", 1);
    symbols.begin_block();
    symbols.declare("x", 3);
    symbols.declare("y", 4);
    print();
    symbols.end_block();
    print();
}
