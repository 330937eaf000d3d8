/* SPDX-License-Identifier: MIT */
/* Operations on an element stack, beside a vector. After every operation the result, the buffer, the elements from the
   bottom to the top, the invariants and the host calls are compared. */
#include "expected_calls.h"
#include "model.h"

#include <mova/lists/element_stack.h>
#include <mova/lists/internal/invariants.h>

#include <array>
#include <cstring>
#include <iterator>

namespace mova::test {

namespace {

constexpr std::array<std::size_t, 4> sizes = {1, 8, 12, 40};
constexpr uint8_t filling = 0xEE;

using element_buffer = std::array<uint8_t, sizes.back()>;

class interpreter : public byte_interpreter {
public:
    explicit interpreter(byte_source bytes)
        : byte_interpreter(bytes), element_size_(sizes[bytes_.below(sizes.size(), 2)])
    {
        create();
    }

private:
    using operation = void (interpreter::*)();

    struct node {
        EL_node *position;
        uint8_t value;
    };

    void operate() override
    {
        static constexpr operation operations[] = {
            &interpreter::push,       &interpreter::push, &interpreter::push,        &interpreter::pop,
            &interpreter::pop,        &interpreter::pop,  &interpreter::inspect,     &interpreter::count,
            &interpreter::make_empty, &interpreter::turn, &interpreter::start_again,
        };
        do_one_of(operations);
    }

    void finish() override
    {
        release();
        expected_.require_nothing_left();
    }

    bool describe(state_text &state, std::size_t most) const override
    {
        state.add(element_size_);
        for (const node &each : nodes_)
            state.add(each.value);
        return nodes_.size() <= most;
    }

    std::size_t node_size() const { return sizeof(EL_node) + element_size_; }

    /* An element whose bytes are all `value`, in a buffer that is longer. */
    element_buffer element(uint8_t value) const
    {
        element_buffer made;
        made.fill(filling);
        std::fill_n(made.begin(), element_size_, value);
        return made;
    }

    /* What a buffer holds after the top was copied into it, or was not, there being none. */
    element_buffer top() const { return element(nodes_.empty() ? filling : nodes_.back().value); }

    /* ---- operations ---- */

    /* Of the size only the low 16 bits count. */
    void create()
    {
        expected_.alloc(sizeof(ES_stack));
        stack_ = ES_create(static_cast<uint32_t>(element_size_ + 0x10000 * bytes_.below(2)));
    }

    void push()
    {
        const uint8_t value = bytes_.next();
        expected_.alloc(node_size());
        nodes_.push_back({ES_push(stack_, element(value).data()), value});
    }

    void pop()
    {
        const element_buffer wanted = top();
        const int present = nodes_.empty() ? 0 : 1;
        if (present) {
            expected_.dealloc(nodes_.back().position, node_size());
            nodes_.pop_back();
        }
        element_buffer buffer = element(filling);
        require(ES_pop(stack_, buffer.data()) == present, "pop returned another result");
        require(buffer == wanted, "pop left another buffer");
    }

    void inspect()
    {
        element_buffer buffer = element(filling);
        require(ES_inspect_top(stack_, buffer.data()) == !nodes_.empty(), "inspect_top returned another result");
        require(buffer == top(), "inspect_top left another buffer");
    }

    void count()
    {
        require(ES_count_items(stack_) == std::ssize(nodes_), "another count");
        require(ES_is_empty(stack_) == nodes_.empty(), "is_empty returned another result");
    }

    void expect_release_of_nodes()
    {
        for (const node &each : nodes_)
            expected_.dealloc(each.position, node_size());
        nodes_.clear();
    }

    void make_empty()
    {
        expect_release_of_nodes();
        ES_make_empty(stack_);
    }

    /* A stack may be handed to the functions of the element list. */
    void turn()
    {
        EL_reverse(stack_);
        std::reverse(nodes_.begin(), nodes_.end());
    }

    void release()
    {
        expect_release_of_nodes();
        expected_.dealloc(stack_, sizeof(ES_stack));
        ES_release(&stack_);
        require(!stack_, "release left the variable");
    }

    void start_again()
    {
        release();
        create();
    }

    void compare() override
    {
        const int broken = broken_invariant(*stack_);
        require(broken == 0, "invariant " + std::to_string(broken) + " is broken");
        require(stack_->count == std::ssize(nodes_), "another number of elements");
        require(stack_->closed == 0, "the stack is closed");
        require(stack_->element_size == element_size_, "another element size");
        EL_node *reached = stack_->first;
        for (const node &each : nodes_) {
            require(reached == each.position, "another node");
            require(std::memcmp(EL_element(reached), element(each.value).data(), element_size_) == 0,
                    "another element");
            reached = reached->next;
        }
        expected_.compare();
    }

    expected_calls expected_;
    std::size_t element_size_;
    ES_stack *stack_ = nullptr;
    std::vector<node> nodes_; /* from the bottom to the top */
};

[[maybe_unused]] const bool added = add_model<interpreter>("element_stack", {60, 1500}, {1000, 40}, {5, 5});

} // namespace

} // namespace mova::test
