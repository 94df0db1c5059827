// arguments.h: the program's command line.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

struct Arguments {
    std::string path;                 // of the application file, or of its folder
    std::vector<std::string> scripts; // run in this order, before the events
    std::vector<std::string> events;  // "name" or "name:target"
    std::size_t stack_bytes = KEL_RTOS_STACK_BYTES;
    std::size_t heap_bytes = KEL_RTOS_HEAP_BYTES; // what tasks find; less than there is to try what happens then
};

// Returns what is wrong with the command line, or "".
std::string read_arguments(int argc, char **argv, Arguments &arguments);
