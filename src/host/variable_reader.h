// variable_reader.h: reads the "variables" of an object of the application file.
#pragma once

#include <vector>

#include <kelhost/description.h>

#include "member_reader.h"

namespace kelhost {

// A variable whose type or value cannot be read keeps its name, so that what refers to it does not look wrong.
void read_variables(Reader &reader, const JsonValue &json, const Place &place,
                    std::vector<VariableDescription> &variables);

} // namespace kelhost
