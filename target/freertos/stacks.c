/* stacks.c: the tasks' stacks, and what is said when one was too small. */
#include <FreeRTOS.h>
#include <task.h>

#include <semihosting.h>

#include "statuses.h"

/* The kernel sees an overflow when the task is left, at the next tick at the latest. What the task writes below its
 * stack until then would be other tasks' memory: this much below each stack is nobody's. */
enum { MARGIN = 16 * 1024 };

void *pvPortMallocStack(size_t size) {
    uint8_t *const block = size <= SIZE_MAX - MARGIN ? pvPortMalloc(MARGIN + size) : NULL;
    return block != NULL ? block + MARGIN : NULL;
}

void vPortFreeStack(void *stack) {
    if (stack != NULL) vPortFree((uint8_t *)stack - MARGIN);
}

void vApplicationStackOverflowHook(TaskHandle_t task, char *name) {
    (void)task;
    semihosting_write("\nthe stack of the task \"");
    semihosting_write(name);
    semihosting_write("\" is too small\n");
    semihosting_exit(STACK_OVERFLOW);
}
