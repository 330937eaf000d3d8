/* Every container family. */
#ifndef MOVA_CONTAINER_H
#define MOVA_CONTAINER_H

#include <mova/clut/colour_table.h>
#include <mova/lists/double_list.h>
#include <mova/lists/element_list.h>
#include <mova/lists/element_stack.h>
#include <mova/lists/generic_list.h>
#include <mova/lists/simple_list.h>

#endif
