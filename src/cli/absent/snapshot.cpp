// snapshot.cpp: `kel snapshot` where the library that draws is not to be had.
#include "../commands.h"
#include "../output.h"

namespace kelhost {

ExitStatus snapshot(const SnapshotArguments &) {
    report_error("this build of kel has no snapshot: it was made without the library cairo, which draws pictures");
    return bad_input;
}

} // namespace kelhost
