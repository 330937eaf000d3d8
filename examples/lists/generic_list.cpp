#include <mova/lists/generic_list.h>
#include <cstdio>

int main()
{
    int numbers[] = {1, 2, 3, 4};
    GL_list *list = GL_create();
    for (int &number : numbers)
        GL_append_after_last(list, &number);
    GL_iterator iterator = GL_all_items_reversed(list);
    for (void *item; GL_next_item(&iterator, &item);)
        std::printf("%d\n", *static_cast<int *>(item));
    GL_release(&list);
}
