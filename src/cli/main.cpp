// main.cpp: starts the tool; no exception leaves it, and no output is lost unnoticed.
#include "command_line.h"
#include "output.h"

#include <exception>

int main(int argc, char **argv) {
    kelhost::ExitStatus status = kelhost::failed;
    try {
        status = kelhost::execute_command_line(argc, argv);
    } catch (const std::exception &error) {
        kelhost::report_error(error.what());
    }
    return kelhost::finish_output() || status != kelhost::succeeded ? status : kelhost::failed;
}
