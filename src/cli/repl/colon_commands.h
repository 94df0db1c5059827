// colon_commands.h: what a REPL can be told beside Lua: lines that begin with a colon.
#pragma once

#include "../session.h"

#include <string>
#include <string_view>
#include <vector>

namespace kelhost {

enum class CommandResult { done, refused, quit };

// Whether the line begins with ":", after blanks or at once: no code does.
bool is_command(std::string_view line);

// Does what such a line says. Refused: after an error message.
CommandResult execute_command(Session &session, const std::string &line);

// ":help" and so on.
std::vector<std::string> command_words();

} // namespace kelhost
