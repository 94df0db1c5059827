// random_case.h: what is generated: bricks that any application can be made of, and steps that any application can be
// put through. Every pick is taken modulo what there is, so that leaving bricks or steps out always leaves a case.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "description.h"
#include "oracle.h"

struct Brick {
    enum Kind {
        layer,
        control,
        group,
        screen,
        instance,
        table,
        null_entry,
        listed_again,    // an object in one more container
        instance_again,  // a layer instance in one more place
        template_cell,   // of a table, and sometimes listed directly too
        absent_layer,    // a layer that is not in the map
        lost_control,    // a control that no list holds
        invalid_type,    // an object of no valid type
        odd_cell,        // any object as a table's cell
        misleading_name, // a name that resolves to another object
        variable,
        cell_variable,
        kind_count
    };
    int kind = layer;
    int owner = 0;
    int pick = 0;
    int name = 0;
    int rows = 0;
    int cols = 0;

    bool operator==(const Brick &) const = default;
};

struct Argument {
    enum Kind { handle, name, variable, text, number, nil, boolean, table, foreign, function, kind_count };
    int kind = handle;
    int pick = 0;

    bool operator==(const Argument &) const = default;
};

struct Step {
    enum Event { call, collect, host_removes, host_renames, host_writes, host_forgets, host_resizes };
    int event = call;
    int function = 0; // in all_functions()
    int place = 0;
    std::vector<Argument> arguments;
    int missing = 0; // 1: the application, 2: the data manager
    int fault = 0;
    int nth = 1;
    int clone = 0; // 0: refused; otherwise which object the host says that it made

    bool operator==(const Step &) const = default;
};

struct RandomCase {
    bool errors_return = false;
    std::vector<Brick> bricks;
    std::vector<Step> steps;

    bool operator==(const RandomCase &) const = default;
};

Description build_description(const std::vector<Brick> &bricks);

// An argument's value in the state that an application is in. handles: those that the script has.
Value resolve_argument(const Argument &argument, const Description &description, const Values &handles);

// A qualified name, known or not, that a pick stands for.
std::string picked_name(const Description &description, int pick);
std::string picked_key(const Description &description, int pick);
Value picked_number_or_text(int pick);

// Found by the generator's library when it reports a failure: the application as a tree, the steps as Lua.
void showValue(const RandomCase &random_case, std::ostream &out);
