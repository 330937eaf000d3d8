#include "groups.h"

int main(void)
{
    check_memory();
    check_messages();
    check_errors();
    return 0;
}
