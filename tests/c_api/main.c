#include "c_api.h"

int main(void)
{
    drive_generic_list();
    drive_host();
    return 0;
}
