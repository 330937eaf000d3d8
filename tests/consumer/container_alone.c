/* A program that uses nothing but a container. */
#include <mova/lists/generic_list.h>

int main(void)
{
    int item = 0;
    GL_list *list = GL_create();
    GL_append_after_last(list, &item);
    const int32_t count = GL_count_items(list);
    GL_release(&list);
    return count == 1 ? 0 : 1;
}
