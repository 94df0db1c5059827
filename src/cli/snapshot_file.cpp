// snapshot_file.cpp: what every build of the tool knows of snapshots: how their files are called.
#include "snapshot_file.h"

namespace kelhost {

std::string snapshot_name_fault(const std::string &file) {
    for (const char *extension : {".svg", ".png", ".txt"})
        if (file.ends_with(extension)) return {};
    return "expected a file name that ends in .svg, .png or .txt, found \"" + file + "\"";
}

} // namespace kelhost
