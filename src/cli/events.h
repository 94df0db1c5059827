// events.h: events that the user sends to an application.
#pragma once

#include <string>

#include <kelhost/application.h>

namespace kelhost {

// Whether the text is "NAME" or "NAME:TARGET".
bool is_event(const std::string &text);

// Sends the event that the text, for which is_event() holds, describes, and delivers all that waits. That nobody
// handles it is a note. False, after an error message with the nearest name, when no object and no variable has the
// target's.
bool send_event(Application &app, const std::string &text);

} // namespace kelhost
