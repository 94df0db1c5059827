// completion.h: what can stand at the cursor, from the application as it is now.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <kelhost/application.h>

namespace kelhost {

struct Completions {
    std::size_t begin = 0;          // the byte of the line that the words begin at
    std::vector<std::string> words; // whole ones; sorted, each once
};

// In quotes: the names of objects; after kel.get_value( and kel.set_value( the keys of variables, and after
// h:get_value( and the like those of the handle's object, as the method takes them. After a dot or a colon: the fields
// or methods of the value that the path before it leads to. Else: globals. In a command: what it takes. Nothing of a
// script's is called and no metamethod is used: a path of names is followed as far as plain fields lead.
Completions complete(Application &app, std::string_view before_cursor);

} // namespace kelhost
