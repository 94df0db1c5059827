// sample_model.h: the applications that operations are measured on.
#pragma once

#include <memory>
#include <string>

#include <kelhost/application.h>

namespace bench {

// How large an application is. Its controls all stand in one container, which stands in depth - 1 others.
struct Size {
    int controls;
    int depth; // from 1: the container is the layer itself

    bool operator==(const Size &) const = default;
};

// Beside that container there is a layer "side" with a small group "side.few" of three controls, a control "side.panel"
// with 100 variables, v1 to v100, and a table "side.grid"; and two screens, "home" with both layers, and "spare".
struct SampleModel {
    std::unique_ptr<kelhost::Application> application; // started, with the plug-in
    Size size;
    std::string container; // qualified names
    std::string control;   // the middle one
};

// Ends the program when the application does not start, or later logs a warning: what then was measured was a failure.
SampleModel start_sample(Size size);

} // namespace bench
