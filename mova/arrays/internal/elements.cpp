/* SPDX-License-Identifier: MIT */
#include <mova/arrays/internal/elements.h>

#include <mova/arrays/internal/host_buffer.h>
#include <mova/arrays/internal/reverse_words.h>
#include <mova/frame/internal/assert.h>

namespace mova {

namespace {

void swap_pairwise(char *low, char *high, size_t size, int32_t pairs, void *buffer)
{
    for (; pairs > 0; --pairs, low += size, high -= size) {
        mova_copy_element(buffer, low, size);
        mova_copy_element(low, high, size);
        mova_copy_element(high, buffer, size);
    }
}

} // namespace

void elements::reverse(int32_t count) const
{
    host_buffer buffer(size_);
    if (count < 2)
        return;
    if (size_ == 4)
        reverse_words<uint32_t>(data_, static_cast<size_t>(count));
    else if (size_ == 8)
        reverse_words<uint64_t>(data_, static_cast<size_t>(count));
    else
        swap_pairwise(data_, at(count - 1), size_, count / 2, buffer.block());
}

void elements::roll(int32_t count, int32_t n) const
{
    assert(count > 0);
    /* The same element whichever multiple of `count` is added to n: the remainder that is not negative. */
    int64_t first = n % int64_t{count};
    if (first < 0)
        first += count;
    if (first == 0)
        return;
    auto head = static_cast<int32_t>(first);
    int32_t tail = count - head;
    if (tail <= count / 2) {
        host_buffer buffer(bytes_of(tail, size_));
        read(buffer.block(), head, tail);
        move(tail, 0, head);
        write(0, buffer.block(), tail);
    } else {
        host_buffer buffer(bytes_of(head, size_));
        read(buffer.block(), 0, head);
        move(0, head, tail);
        write(tail, buffer.block(), head);
    }
}

} // namespace mova
