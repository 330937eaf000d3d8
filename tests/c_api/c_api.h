/* Each part drives the functions of one header, from C. */
#ifndef MOVA_TESTS_C_API_C_API_H
#define MOVA_TESTS_C_API_C_API_H

void drive_block_array(void);
void drive_balanced_tree(void);
void drive_colour_table(void);
void drive_double_list(void);
void drive_dynamic_array(void);
void drive_element_list(void);
void drive_element_stack(void);
void drive_generic_list(void);
void drive_hash_table(void);
void drive_host(void);
void drive_id_lookup_table(void);
void drive_pointer_lookup(void);
void drive_simple_list(void);
void drive_sorted_number_array(void);
void drive_swap_cache(void);

#endif
