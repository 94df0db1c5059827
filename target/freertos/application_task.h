// application_task.h: the task that runs the application, and what it takes.
#pragma once

#include <cstddef>

#include <FreeRTOS.h>
#include <task.h>

#include "arguments.h"

// What is known when the task has ended. Heap: of all tasks, in bytes; stack: of this one.
struct Outcome {
    int status = 0;                  // how the program is to end
    std::size_t free_at_start = 0;   // heap, when its stack was already taken
    std::size_t free_at_worst = 0;   // heap
    std::size_t left_by_reading = 0; // stack never used until the application's file was read
    std::size_t left_by_scripts = 0; // stack not used since; as the above when there was no file to read
};

// Runs the application in a task of its own, and waits in the calling task until it has ended and is gone. False when
// there is no memory for the task.
bool run_application_task(const Arguments &arguments, UBaseType_t priority, Outcome &outcome);
