// snapshot.cpp: `kel snapshot` where the library that draws is not to be had.
#include "../commands.h"
#include "../output.h"
#include "../snapshot_file.h"

namespace kelhost {

namespace {

constexpr const char *reason =
    "this build of kel has no snapshot: it was made without the library cairo, which draws pictures";

} // namespace

std::string write_snapshot(const Application &, const SnapshotArguments &) { return reason; }

ExitStatus snapshot(const SnapshotArguments &) {
    report_error(reason);
    return bad_input;
}

} // namespace kelhost
