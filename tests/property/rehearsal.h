// rehearsal.h: plays a random case with the oracle alone, and hands out each action with what is expected of it.
#pragma once

#include <functional>

#include "random_case.h"

// One thing that a script or the host does, with all values chosen.
struct Action {
    int event = Step::call;

    // A call.
    std::string place;
    std::string function;
    Values arguments;
    Circumstances circumstances;

    // What the host does by itself.
    ObjectIndex object = nobody;
    std::string text; // a name or a key
    Value value;
    int rows = 0;
    int cols = 0;

    bool is_preparation = false; // getting the handles that the steps begin with
};

// What stands behind the first handles and the steps, one after the other. live_names: names of handles afterwards.
using Spectator = std::function<bool(const Action &action, const Outcome &expected, int live_names)>;

// Until the spectator returns false.
void rehearse(const RandomCase &random_case, const Description &description, const Spectator &spectator);

// As a line of Lua, or a comment that says what the host does.
std::string action_text(const Action &action, const Description &description);
