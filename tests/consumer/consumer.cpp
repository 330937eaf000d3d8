/* SPDX-License-Identifier: MIT */
// A program in C++ that uses an installed libmova_container and its default host.
#include <iostream>

#include <mova/container.h>
#include <mova/frame/host.h>
#include <mova/host/errors.h>
#include <mova/host/memory.h>
#include <mova/host/messages.h>

namespace {

int sum_of_items()
{
    int items[3] = {1, 2, 4};
    GL_list *list = GL_create();
    for (int &item : items)
        GL_append_after_last(list, &item);

    int sum = 0;
    void *item = nullptr;
    GL_iterator iterator = GL_all_items(list);
    while (GL_next_item(&iterator, &item))
        sum += *static_cast<int *>(item);
    GL_release(&list);
    return sum;
}

} // namespace

int main()
{
    try {
        EX_raise_exception_line("consumer", 1, MOVA_PRECONDITION_BROKEN);
    } catch (const mova::error &error) {
        const int sum = sum_of_items();
        std::cout << "sum " << sum << ", raised: " << error.what() << '\n';
        return sum == 7 && error.code() == MOVA_PRECONDITION_BROKEN ? 0 : 1;
    }
    return 1;
}
