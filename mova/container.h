/* Every container family. */
#ifndef MOVA_CONTAINER_H
#define MOVA_CONTAINER_H

#include <mova/lists/generic_list.h>

#endif
