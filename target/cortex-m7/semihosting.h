/* semihosting.h: calls to the emulator (or the debugger) that a program runs under. The C library makes its own for
   files and streams. */
#pragma once

#include <stddef.h>

/* Fills line with the command line, words divided by blanks. Returns 0, or -1 when it is longer than size - 1. */
int semihosting_command_line(char *line, size_t size);

/* Writes text to the emulator's console at once, past the C library. */
void semihosting_write(const char *text);

/* Whether path is a folder of the machine that the emulator runs on. */
int semihosting_is_folder(const char *path);

/* Runs a command of the shell of the machine that the emulator runs on. Returns its status. */
int semihosting_run(const char *command);

/* Ends the program. status: 0 to 255. */
void semihosting_exit(int status) __attribute__((noreturn));
