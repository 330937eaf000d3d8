/* Each part drives the functions of one header, from C. */
#ifndef MOVA_TESTS_C_API_C_API_H
#define MOVA_TESTS_C_API_C_API_H

void drive_generic_list(void);
void drive_host(void);

#endif
