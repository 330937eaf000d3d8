#include "c_api.h"

int main(void)
{
    drive_double_list();
    drive_element_list();
    drive_element_stack();
    drive_generic_list();
    drive_host();
    drive_simple_list();
    drive_swap_cache();
    return 0;
}
