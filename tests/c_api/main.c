#include "c_api.h"

int main(void)
{
    drive_double_list();
    drive_element_list();
    drive_element_stack();
    drive_generic_list();
    drive_hash_table();
    drive_host();
    drive_pointer_lookup();
    drive_simple_list();
    return 0;
}
