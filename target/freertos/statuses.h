/* statuses.h: how the program ends. */
#pragma once

enum {
    SUCCEEDED = 0,
    SCRIPT_FAILED = 1,
    BAD_INPUT = 2, /* the command line or the application file */
    STACK_OVERFLOW = 3,
    OUT_OF_MEMORY = 4, /* not even the application's start had enough; a script that asks for too much fails alone */
};
