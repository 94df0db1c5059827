// replay.h: holds the cases of files against the oracle, where none can be generated.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

// arguments: of the command line, [--at-most N] FILE...; N is how many cases of each file are played.
// Returns the exit status: 0 when all is as expected; 1 when a case differs or something never came up; 2 for bad usage
// or a file that cannot be read. What there is to say goes to the report.
int replay(const std::vector<std::string> &arguments, std::FILE *report);
