#include "c_api.h"

int main(void)
{
    drive_block_array();
    drive_balanced_tree();
    drive_colour_table();
    drive_double_list();
    drive_dynamic_array();
    drive_element_list();
    drive_element_stack();
    drive_generic_list();
    drive_hash_table();
    drive_host();
    drive_id_lookup_table();
    drive_pointer_lookup();
    drive_simple_list();
    drive_sorted_number_array();
    drive_swap_cache();
    return 0;
}
