/* instruction_counter.h: counts the instructions that the emulated board executes. */
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

void start_instruction_counter(void);

/* Instructions since the start, to within 2. */
uint64_t instructions_counted(void);

/* Executes that many instructions, within 4; count is even. */
void execute_instructions(uint32_t count);

#ifdef __cplusplus
}
#endif
