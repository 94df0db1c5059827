/* faults.h: the exceptions of the processor. */
#pragma once

/* Says what happened and where, and ends the program with status 134, as a shell reports an abort. */
void fault_handler(void);

/* An operating system replaces these; without one they are faults. */
void SVC_Handler(void);
void PendSV_Handler(void);
void SysTick_Handler(void);
