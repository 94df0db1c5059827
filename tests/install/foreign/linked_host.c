/* linked_host.c: runs the command line's line with the plug-in that is linked into the program. */
#include "small_host.h"

int main(int argc, char **argv) { return argc == 2 ? run_line(KEL_PLUGIN_CREATE_FUNC, argv[1]) : 2; }
