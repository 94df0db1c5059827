// recorded_model.h: the recording host's model, made from a description.
#pragma once

#include <string>
#include <vector>

#include "description.h"

// Fills the host's application. Returns the records of the description's objects, which stay the host's.
std::vector<void *> build_recorded_model(const Description &description);

void write_recorded_variable(const std::string &key, const Value &value);
