// application_task.cpp: begins and ends the task around the application, and measures.
// C++ exceptions are this task's alone: the C++ library keeps the one that is in flight in static memory.
#include "application_task.h"

#include <cstdint>
#include <cstdio>

#include "run_application.h"

namespace {

struct Work {
    const Arguments &arguments;
    Outcome &outcome;
    TaskHandle_t caller;
};

Outcome *measured = nullptr; // before_scripts() takes no argument

std::size_t stack_left(TaskHandle_t task) { return uxTaskGetStackHighWaterMark(task) * sizeof(StackType_t); }

// Writes the kernel's pattern over all of the stack that is not in use now.
void forget_stack_use() {
    constexpr std::uint8_t unused = 0xA5; // the kernel's own pattern
    TaskStatus_t task{};
    vTaskGetInfo(nullptr, &task, pdFALSE, eRunning);
    std::uintptr_t end = 0;
    __asm__ volatile("mov %0, sp" : "=r"(end));
    auto *byte = reinterpret_cast<volatile std::uint8_t *>(task.pxStackBase);
    while (reinterpret_cast<std::uintptr_t>(byte) < end) *byte++ = unused;
}

// The host reads its application's file deeper in the stack than most scripts run. An engine has no such file: what
// scripts take is counted for itself.
void begin_to_count_scripts() {
    measured->left_by_reading = stack_left(nullptr);
    forget_stack_use();
}

void do_work(void *argument) {
    const Work work = *static_cast<const Work *>(argument);
    work.outcome.free_at_start = xPortGetFreeHeapSize();
    work.outcome.status = run_application(work.arguments, begin_to_count_scripts);
    work.outcome.free_at_worst = xPortGetMinimumEverFreeHeapSize();
    work.outcome.left_by_scripts = stack_left(nullptr);
    static_cast<void>(std::fflush(stdout)); // this task's own stream
    xTaskNotifyGive(work.caller);
    vTaskSuspend(nullptr); // the caller deletes it
}

} // namespace

bool run_application_task(const Arguments &arguments, UBaseType_t priority, Outcome &outcome) {
    Work work{arguments, outcome, xTaskGetCurrentTaskHandle()};
    measured = &outcome;
    TaskHandle_t task = nullptr;
    const std::size_t words = arguments.stack_bytes / sizeof(StackType_t);
    if (xTaskCreate(do_work, "application", words, &work, priority, &task) != pdPASS) return false;
    static_cast<void>(ulTaskNotifyTake(pdTRUE, portMAX_DELAY));
    vTaskDelete(task);
    if (outcome.left_by_reading == 0) outcome.left_by_reading = outcome.left_by_scripts;
    return true;
}
