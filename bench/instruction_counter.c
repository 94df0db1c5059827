/* instruction_counter.c: the processor's own timer as a counter of instructions. The emulator is to be told that an
 * instruction takes 32 ns (-icount shift=5,sleep=off); the board's clock ticks every 40 ns, so that 4 ticks are 5
 * instructions. The timer has 24 bits: each time that it runs out is counted. */
#include "instruction_counter.h"

void SysTick_Handler(void);

static volatile uint32_t *const SYST_CSR = (volatile uint32_t *)0xE000E010;
static volatile uint32_t *const SYST_RVR = (volatile uint32_t *)0xE000E014;
static volatile uint32_t *const SYST_CVR = (volatile uint32_t *)0xE000E018;

enum { LAST_VALUE = 0xFFFFFF };

static volatile uint32_t times_run_out;

void SysTick_Handler(void) { ++times_run_out; }

void start_instruction_counter(void) {
    times_run_out = 0;
    *SYST_RVR = LAST_VALUE;
    *SYST_CVR = 0;
    *SYST_CSR = 7; /* the processor's clock, with the interrupt */
}

/* It counts down. At 0 it has run out already, so that moment is waited out, as is one between both readings. */
static uint64_t ticks(void) {
    uint32_t before;
    uint32_t value;
    do {
        before = times_run_out;
        value = *SYST_CVR;
    } while (value == 0 || before != times_run_out);
    return ((uint64_t)before << 24) + (LAST_VALUE - value);
}

uint64_t instructions_counted(void) { return ticks() * 5 / 4; }

void execute_instructions(uint32_t count) {
    uint32_t turns = count / 2;
    __asm__ volatile("1: subs %0, #1\n"
                     "bne 1b\n"
                     : "+r"(turns)
                     :
                     : "cc");
}
