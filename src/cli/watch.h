// watch.h: runs something again each time a file that it is made of changes.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "commands.h"

namespace kelhost {

// What is run, in a process of its own, so that whatever becomes of it ends nothing but the run.
using Work = std::function<ExitStatus()>;
// The files that the work depends on, asked before each run. They need not exist.
using Files = std::function<std::vector<std::string>()>;

// Runs the work, and again after each change of a file; the changed file and the end of a run that crashed are
// reported. Ends, with `succeeded`, when the user interrupts it (Ctrl-C) or nobody reads any more what a run prints.
// Returns the work's status in the process that is to end with it.
ExitStatus watch(const Files &files, const Work &work);

} // namespace kelhost
