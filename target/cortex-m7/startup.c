/* startup.c: from reset to main() and back. */
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include "faults.h"
#include "semihosting.h"

extern uint8_t stack_top[];
extern uint8_t bss_start[];
extern uint8_t bss_end[];

void initialise_monitor_handles(void); /* the C library's: opens the three streams */
void __libc_init_array(void);
int main(int argc, char **argv);
void reset_handler(void) __attribute__((noreturn));

/* Asked for by the C and C++ libraries. */
void *__dso_handle;
void _init(void) {}
void _fini(void) {}

typedef union {
    const void *initial_stack;
    void (*handler)(void);
} vector_t;

static const vector_t reset_pair[]
    __attribute__((used, section(".reset_pair"))) = {{stack_top}, {.handler = reset_handler}};

/* No device interrupts: programs here poll. */
static const vector_t vectors[16] __attribute__((used, section(".vectors"), aligned(128))) = {
    {stack_top},
    {.handler = reset_handler},
    {.handler = fault_handler}, /* NMI */
    {.handler = fault_handler}, /* hard fault */
    {.handler = fault_handler}, /* memory management */
    {.handler = fault_handler}, /* bus */
    {.handler = fault_handler}, /* usage */
    [11] = {.handler = SVC_Handler},
    [12] = {.handler = fault_handler}, /* debug monitor */
    [14] = {.handler = PendSV_Handler},
    [15] = {.handler = SysTick_Handler},
};

static volatile uint32_t *const CPACR = (volatile uint32_t *)0xE000ED88;
static volatile uint32_t *const VTOR = (volatile uint32_t *)0xE000ED08;
static volatile uint32_t *const SHCSR = (volatile uint32_t *)0xE000ED24;
static volatile uint32_t *const MPU_CTRL = (volatile uint32_t *)0xE000ED94;
static volatile uint32_t *const MPU_RBAR = (volatile uint32_t *)0xE000ED9C;
static volatile uint32_t *const MPU_RASR = (volatile uint32_t *)0xE000EDA0;

static void turn_on_floating_point(void) {
    *CPACR |= 0xFU << 20;
    __asm__ volatile("dsb\n isb" ::: "memory");
}

enum { ACCESS_NONE = 0, ACCESS_READ = 6 };

/* size: a power of two, from 32; base is a multiple of it. A region with a higher number lies over the others. */
static void protect(uint32_t region, uint32_t base, uint32_t size, uint32_t access) {
    const uint32_t log2_size = 31U - (uint32_t)__builtin_clz(size);
    *MPU_RBAR = base | 1U << 4 | region;
    *MPU_RASR = access << 24 | 1U << 17 | (log2_size - 1) << 1 | 1U;
}

/* The program cannot be overwritten, and what a null pointer reaches faults. */
static void protect_memory(void) {
    protect(0, 0, 4U << 20, ACCESS_READ);
    protect(1, 0, 64, ACCESS_NONE);
    *MPU_CTRL = 1U << 2 | 1U; /* elsewhere as without protection */
    __asm__ volatile("dsb\n isb" ::: "memory");
}

/* Cuts the line into words in place. Returns their number, or -1 when there are too many; words ends with a null
 * pointer. */
static int split(char *line, char **words, int most) {
    int count = 0;
    for (char *word = strtok(line, " "); word != NULL; word = strtok(NULL, " ")) {
        if (count == most) return -1;
        words[count++] = word;
    }
    words[count] = NULL;
    return count;
}

static int run_main(void) {
    enum { MOST_ARGUMENTS = 256, REFUSED = 2 };
    static char line[4096];
    static char *arguments[MOST_ARGUMENTS + 1];
    if (semihosting_command_line(line, sizeof line) != 0) {
        semihosting_write("the command line is longer than 4095 characters\n");
        return REFUSED;
    }
    const int count = split(line, arguments, MOST_ARGUMENTS);
    if (count == -1) {
        semihosting_write("the command line has more than 256 words\n");
        return REFUSED;
    }
    return main(count, arguments);
}

void reset_handler(void) {
    turn_on_floating_point();
    *VTOR = (uint32_t)(uintptr_t)vectors;
    *SHCSR |= 7U << 16; /* memory, bus and usage faults by their own names */
    protect_memory();
    memset(bss_start, 0, (size_t)(bss_end - bss_start));
    initialise_monitor_handles();
    __libc_init_array();
    exit(run_main());
}
