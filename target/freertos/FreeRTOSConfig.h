/* FreeRTOSConfig.h: how the kernel is built for the emulated board. */
#pragma once

/* The port assembles this file too. */
#ifndef __ASSEMBLER__
void report_failed_assertion(const char *file, int line);
#endif
#define configASSERT(condition)                                                                                        \
    if (!(condition)) report_failed_assertion(__FILE__, __LINE__)

#define configCPU_CLOCK_HZ 25000000
#define configTICK_RATE_HZ 1000
#define configTICK_TYPE_WIDTH_IN_BITS TICK_TYPE_WIDTH_32_BITS
#define configUSE_PREEMPTION 1
#define configUSE_TIME_SLICING 1
#define configMAX_PRIORITIES 3
#define configMAX_TASK_NAME_LEN 16
#define configSTACK_DEPTH_TYPE uint32_t
#define configMINIMAL_STACK_SIZE 256 /* words; the idle task's */
#define configUSE_IDLE_HOOK 0
#define configUSE_TICK_HOOK 0
#define configUSE_TIMERS 0
#define configUSE_MUTEXES 0

/* The kernel interrupts last; interrupts more urgent than 0x50 may not call it, and it never keeps them out. */
#define configKERNEL_INTERRUPT_PRIORITY 0xF0
#define configMAX_SYSCALL_INTERRUPT_PRIORITY 0x50

/* The names in the board's vector table. */
#define vPortSVCHandler SVC_Handler
#define xPortPendSVHandler PendSV_Handler
#define xPortSysTickHandler SysTick_Handler

/* One heap for the kernel, the C library, C++ and Lua; the linker script places it, the build says how large. */
#define configSUPPORT_DYNAMIC_ALLOCATION 1
#define configSUPPORT_STATIC_ALLOCATION 0
#define configAPPLICATION_ALLOCATED_HEAP 1
#define configTOTAL_HEAP_SIZE ((size_t)KEL_RTOS_HEAP_BYTES)
#define configUSE_MALLOC_FAILED_HOOK 1 /* counts: to be short of memory is the caller's affair */

/* Both the stack's end and the bytes at it are looked at when a task is left; stacks.c says what happens until then. */
#define configCHECK_FOR_STACK_OVERFLOW 2
#define configSTACK_ALLOCATION_FROM_SEPARATE_HEAP 1

/* A task has its own errno, streams, strtok() and scratch numbers of printf(): so the C library needs no lock for them,
 * and the kernel gives back with the task what the library took for it. About 1 kB a task. */
#define configUSE_NEWLIB_REENTRANT 1

/* vTaskGetInfo() tells where a stack begins. */
#define configUSE_TRACE_FACILITY 1

#define INCLUDE_vTaskDelay 1
#define INCLUDE_vTaskDelete 1
#define INCLUDE_vTaskSuspend 1
#define INCLUDE_uxTaskGetStackHighWaterMark 1
#define INCLUDE_xTaskGetCurrentTaskHandle 1
