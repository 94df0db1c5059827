// generate.h: random cases about a subject.
#pragma once

#include <rapidcheck.h>

#include "random_case.h"

// subjects: of functions.h, or'ed.
rc::Gen<RandomCase> arbitrary_case(unsigned subjects);
