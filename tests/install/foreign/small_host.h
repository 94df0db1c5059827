/* small_host.h: the least of a host in C with which a plug-in starts and its constants can be read. */
#ifndef SMALL_HOST_H
#define SMALL_HOST_H

#include <kel/kel.h>

/* Starts the plug-in, runs one line of Lua and prints what it gives. Returns the program's exit status. */
int run_line(int (*plugin_entry)(kl_plugin_state_t *state), const char *line);

#endif
