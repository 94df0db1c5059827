// case_text.h: a random case as one line of text, for programs that generate none of their own.
#pragma once

#include <string>
#include <string_view>

#include "random_case.h"

// Words with one blank between them:
//   unwinds                                         or "returns": what the host's errors do
//   +KIND,OWNER,PICK,NAME,ROWS,COLS                 a brick
//   =EVENT,FUNCTION,PLACE,MISSING,FAULT,NTH,CLONE   a step; a function as keldom.get_object, the rest as numbers
//   :KIND,PICK                                      behind it without a blank, once an argument
std::string case_text(const RandomCase &random_case);

// The case that such a line stands for. Throws std::invalid_argument, which says what was found and what was expected.
RandomCase case_from_text(std::string_view text);
