/* semihosting.c: one instruction calls the emulator: the operation's number in r0, its argument in r1, the result in
 * r0. */
#include "semihosting.h"

#include <stdint.h>
#include <stdio.h>
#include <string.h>

enum {
    SYS_OPEN = 0x01,
    SYS_CLOSE = 0x02,
    SYS_WRITE0 = 0x04,
    SYS_SYSTEM = 0x12,
    SYS_GET_CMDLINE = 0x15,
    SYS_EXIT_EXTENDED = 0x20
};
enum { APPLICATION_EXIT = 0x20026 };

static int call(int operation, const void *argument) {
    register int r0 __asm__("r0") = operation;
    register const void *r1 __asm__("r1") = argument;
    __asm__ volatile("bkpt 0xAB" : "+r"(r0) : "r"(r1) : "memory");
    return r0;
}

int semihosting_command_line(char *line, size_t size) {
    struct {
        char *line;
        size_t size;
    } block = {line, size};
    return call(SYS_GET_CMDLINE, &block);
}

void semihosting_write(const char *text) { (void)call(SYS_WRITE0, text); }

/* There is no call that asks this, but only of a folder can "." in it be opened. */
int semihosting_is_folder(const char *path) {
    enum { READ_BINARY = 1 };
    char inside[1024];
    const int length = snprintf(inside, sizeof inside, "%s/.", path);
    if (length >= (int)sizeof inside) return 0;
    const struct {
        const char *path;
        int mode;
        int length;
    } block = {inside, READ_BINARY, length};
    const int handle = call(SYS_OPEN, &block);
    if (handle == -1) return 0;
    (void)call(SYS_CLOSE, &handle);
    return 1;
}

int semihosting_run(const char *command) {
    const struct {
        const char *command;
        size_t length;
    } block = {command, strlen(command)};
    return call(SYS_SYSTEM, &block);
}

void semihosting_exit(int status) {
    const uint32_t block[] = {APPLICATION_EXIT, (uint32_t)status};
    for (;;) (void)call(SYS_EXIT_EXTENDED, block);
}
