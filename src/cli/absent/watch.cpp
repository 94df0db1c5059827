// watch.cpp: where nobody tells of changes of files.
#include "../watch.h"

#include "../output.h"

namespace kelhost {

ExitStatus watch(const Files &, const Work &) {
    report_error("this build of kel has no --watch: its machine does not tell of changes of files");
    return bad_input;
}

} // namespace kelhost
