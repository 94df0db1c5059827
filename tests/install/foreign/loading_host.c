/* loading_host.c: loads the plug-in that the command line names, and runs the line after it. */
#include "small_host.h"

#include <dlfcn.h>
#include <stdio.h>

int main(int argc, char **argv) {
    union {
        void *address;
        int (*entry)(kl_plugin_state_t *state);
    } found;
    void *library = argc == 3 ? dlopen(argv[1], RTLD_NOW) : NULL;
    found.address = library != NULL ? dlsym(library, "KEL_PLUGIN_CREATE_FUNC") : NULL;
    if (found.address == NULL) {
        fprintf(stderr, "%s\n", argc == 3 ? dlerror() : "usage: loading_host PLUGIN LINE");
        return 2;
    }
    return run_line(found.entry, argv[2]);
}
