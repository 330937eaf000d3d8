/* A caller's loop, which an optimising compiler is to put together without a call of the library. */
#include <mova/lists/generic_list.h>

long sum_of_items(const GL_list *list);

long sum_of_items(const GL_list *list)
{
    long sum = 0;
    void *item;
    GL_iterator iterator = GL_all_items(list);
    while (GL_next_item(&iterator, &item))
        sum += *(int *)item;
    return sum;
}
