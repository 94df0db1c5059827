// replay_property.cpp: random cases that test_property wrote do what the oracle expects of them.
//   replay_property [--at-most N] FILE...
// For machines that the generator library is not built for: it is not in here, nor is anything that bare metal lacks.
#include "replay.h"

int main(int argc, char **argv) { return replay(std::vector<std::string>(argv + 1, argv + argc), stderr); }
