#include "c_api.h"

int main(void)
{
    drive_colour_table();
    drive_double_list();
    drive_element_list();
    drive_element_stack();
    drive_generic_list();
    drive_host();
    drive_simple_list();
    return 0;
}
