/* faults.c: a fault, or abort(), prints the registers that matter and ends the program. */
#include "faults.h"

#include <stdint.h>
#include <stdlib.h>

#include "semihosting.h"

enum { ABORTED = 134 };

extern uint8_t stack_top[];

typedef struct {
    uint32_t r0, r1, r2, r3, r12, lr, pc, xpsr;
} exception_frame_t; /* what the processor pushes */

void report_fault(const exception_frame_t *frame) __attribute__((noreturn, used));

static void write_register(const char *name, uint32_t value) {
    char text[] = "00000000";
    for (int digit = 7; digit >= 0; --digit, value >>= 4) text[digit] = "0123456789abcdef"[value & 15U];
    semihosting_write(name);
    semihosting_write(text);
}

void report_fault(const exception_frame_t *frame) {
    const uint32_t cfsr = *(volatile uint32_t *)0xE000ED28;
    semihosting_write("\nfault:");
    /* Where the stack itself was left, nothing was pushed. */
    const uint32_t stacking_errors = 1U << 4 | 1U << 12;
    if ((cfsr & stacking_errors) == 0) {
        write_register(" pc ", frame->pc);
        write_register(" lr ", frame->lr);
    } else {
        semihosting_write(" stack overflow");
    }
    write_register(" cfsr ", cfsr);
    write_register(" mmfar ", *(volatile uint32_t *)0xE000ED34);
    write_register(" bfar ", *(volatile uint32_t *)0xE000ED38);
    semihosting_write("\n");
    semihosting_exit(ABORTED);
}

/* On a fresh stack: the old one may be what is wrong. */
__attribute__((naked)) void fault_handler(void) {
    __asm__ volatile("tst lr, #4\n"
                     "ite eq\n"
                     "mrseq r0, msp\n"
                     "mrsne r0, psp\n"
                     "ldr r1, =stack_top\n"
                     "msr msp, r1\n"
                     "b report_fault\n");
}

void abort(void) {
    semihosting_write("\naborted\n");
    semihosting_exit(ABORTED);
}

void SVC_Handler(void) __attribute__((weak, alias("fault_handler")));
void PendSV_Handler(void) __attribute__((weak, alias("fault_handler")));
void SysTick_Handler(void) __attribute__((weak, alias("fault_handler")));
