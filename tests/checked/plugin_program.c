/* SPDX-License-Identifier: MIT */
/* A program that is not linked with the library, but loads a plugin that is, more than once. What the plugin has made outlives
   it. The second argument asks for a misuse. */
#include <dlfcn.h>
#include <stdlib.h>

#include <mova/lists/generic_list.h>

static void *plugin;

static void *function(const char *path, const char *name)
{
    plugin = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    void *found = plugin ? dlsym(plugin, name) : NULL;
    if (!found)
        abort();
    return found;
}

int main(int count, char **arguments)
{
    int item = 0;
    if (count < 2)
        return 1;
    GL_list *(*make_list)(void *);
    void (*use_list)(GL_list *, GL_node *);
    *(void **)&make_list = function(arguments[1], "make_list");
    GL_list *list = make_list(&item);
    GL_node *removed = list->first;
    for (int i = 0; i < 2; ++i) {
        dlclose(plugin);
        *(void **)&use_list = function(arguments[1], "use_list");
        use_list(list, count > 2 ? removed : list->first);
    }
    return 0;
}
