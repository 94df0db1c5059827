// main.cpp: three tasks: one runs the application; one beats meanwhile, which shows that the kernel schedules; one
// looks after both and prints figures.
#include <cstdio>
#include <cstdlib>

#include <FreeRTOS.h>
#include <task.h>

#include "application_task.h"
#include "arguments.h"
#include "failures.h"
#include "statuses.h"

namespace {

enum Priority : UBaseType_t { ordinary = 1, urgent = 2 }; // the idle task's is 0

constexpr std::size_t small_stack_words = 2048; // enough for printf()

Arguments arguments; // static: main()'s stack is the interrupts' once the kernel runs
volatile unsigned long beats = 0;

void beat(void *) {
    for (;;) {
        vTaskDelay(1);
        beats = beats + 1;
    }
}

[[noreturn]] void fail(const char *text) {
    static_cast<void>(std::fprintf(stderr, "error: %s\n", text));
    std::exit(OUT_OF_MEMORY);
}

// Takes as much as leaves the application no more than it is to have.
void limit_heap() {
    const std::size_t available = xPortGetFreeHeapSize();
    constexpr std::size_t overhead = 16; // the kernel's own part of a block
    if (arguments.heap_bytes + overhead >= available) return;
    if (pvPortMalloc(available - arguments.heap_bytes - overhead) == nullptr) fail("the heap is in pieces");
}

// The library keeps its records of open files for the next ones: they are no loss.
void have_file_records_made() {
    if (std::FILE *const console = std::fopen(":tt", "r")) static_cast<void>(std::fclose(console));
}

unsigned long number(std::size_t value) { return value; } // the library's printf() knows no %zu

void print_stack(const Outcome &outcome) {
    const std::size_t given = arguments.stack_bytes;
    static_cast<void>(std::printf("stack: %lu bytes used to read the application's file, %lu by its scripts, of %lu\n",
                                  number(given - outcome.left_by_reading), number(given - outcome.left_by_scripts),
                                  number(given)));
}

void print_heap(const Outcome &outcome, std::size_t free_before, std::size_t free_after) {
    static_cast<void>(std::printf("heap: %lu bytes used at most, of %lu; %lu requests found no memory\n"
                                  "heap: %lu bytes free before, %lu after\n",
                                  number(outcome.free_at_start - outcome.free_at_worst), number(outcome.free_at_start),
                                  number(requests_without_memory()), number(free_before), number(free_after)));
}

void oversee(void *) {
    have_file_records_made();
    limit_heap();
    const std::size_t free_before = xPortGetFreeHeapSize();
    const TickType_t begin = xTaskGetTickCount();
    const unsigned long first_beat = beats;
    Outcome outcome;
    if (!run_application_task(arguments, ordinary, outcome)) fail("there is no memory for the application's task");
    const unsigned long ticks = xTaskGetTickCount() - begin;
    const unsigned long beaten = beats - first_beat;
    const std::size_t free_after = xPortGetFreeHeapSize(); // printing takes a buffer
    print_stack(outcome);
    print_heap(outcome, free_before, free_after);
    static_cast<void>(std::printf("kernel: %lu ticks, %lu beats of another task\n", ticks, beaten));
    static_cast<void>(std::fflush(stdout)); // exit() knows the streams of the program's start alone
    std::exit(outcome.status);
}

} // namespace

int main(int argc, char **argv) {
    const std::string fault = read_arguments(argc, argv, arguments);
    if (!fault.empty()) {
        static_cast<void>(std::fprintf(stderr, "error: %s\n", fault.c_str()));
        return BAD_INPUT;
    }
    const bool made = xTaskCreate(oversee, "overseer", small_stack_words, nullptr, ordinary, nullptr) == pdPASS
                      && xTaskCreate(beat, "beat", small_stack_words, nullptr, urgent, nullptr) == pdPASS;
    if (made) vTaskStartScheduler(); // comes back when there is no memory for its own task
    fail("there is no memory for the kernel's tasks");
}
