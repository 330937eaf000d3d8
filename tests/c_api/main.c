#include "c_api.h"

int main(void)
{
    drive_block_array();
    drive_double_list();
    drive_dynamic_array();
    drive_element_list();
    drive_element_stack();
    drive_generic_list();
    drive_host();
    drive_id_lookup_table();
    drive_simple_list();
    drive_sorted_number_array();
    return 0;
}
