/* failures.c: what the kernel calls when something is wrong. */
#include <stdio.h>
#include <stdlib.h>

#include <FreeRTOS.h>
#include <task.h>

#include <semihosting.h>

#include "failures.h"

static size_t failed_requests;

/* The caller gets a null pointer and deals with it, so nothing else is to be done. */
void vApplicationMallocFailedHook(void) { ++failed_requests; }

size_t requests_without_memory(void) { return failed_requests; }

void report_failed_assertion(const char *file, int line) {
    char number[12];
    snprintf(number, sizeof number, ":%d", line);
    semihosting_write("\nthe kernel finds a fault at ");
    semihosting_write(file);
    semihosting_write(number);
    abort();
}
