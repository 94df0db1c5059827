// testing.cpp: `kel test` where it cannot be.
#include "commands.h"
#include "output.h"

namespace kelhost {

ExitStatus test(const TestArguments &) {
    report_error(
        "this build of kel has no command \"test\": busted loads modules that this machine or this Lua cannot");
    return bad_input;
}

} // namespace kelhost
