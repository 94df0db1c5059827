// repl.cpp: `kel repl` where the library that edits lines is not to be had.
#include "../commands.h"
#include "../output.h"

namespace kelhost {

ExitStatus repl(const ReplArguments &) {
    report_error("this build of kel has no repl: it was made without the library libedit, which edits lines");
    return bad_input;
}

} // namespace kelhost
