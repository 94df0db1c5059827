// testing.cpp: `kel test` where it cannot be.
#include "../commands.h"
#include "../output.h"

namespace kelhost {

ExitStatus test(const TestArguments &) {
    report_error("this build of kel has no testing: it was made without a Lua that busted can run on");
    return bad_input;
}

} // namespace kelhost
