// description_checks.h: the checks that many records of a description share: names, numbers, references, variables,
// hints.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include <kelhost/description.h>

#include "fault_report.h"
#include "names.h"
#include "place.h"
#include "wording.h"

namespace kelhost {

// Something that has variables or holds other things.
struct Container {
    const Place &place;
    std::string name; // qualified; "" for the application
    Owner owner = Owner::application;
    const Scope *scope = nullptr; // of what it holds; null when it can hold nothing

    std::string qualify(const std::string &own_name) const { return name.empty() ? own_name : name + '.' + own_name; }
};

// What a reference may name: the items of one list.
struct Choices {
    std::string_view kind;      // "layer"
    std::string_view list_name; // "layers"
    std::vector<std::string_view> in_order;
    std::unordered_set<std::string_view> names;
    bool all_known = true; // false: some names could not be read, so that none can be called unknown
};

// To be inherited by what walks a part of a description.
class DescriptionChecks {
protected:
    explicit DescriptionChecks(FaultReport &report) : report_(report) {}

    // The name of one thing in a container. place: of the name.
    void check_name(const std::string &name, const Place &place, const Container &container, const Scope::Use &use);

    void check_range(const Place &owner, std::string_view member, std::int32_t number, Range range);
    void check_range(const Place &owner, std::string_view member, std::optional<std::int32_t> number, Range range);

    template <typename List>
    Choices choices_of(std::string_view kind, std::string_view list_name, const List &list,
                       const Place &list_place) const;
    void check_reference(const std::string &name, const Place &place, const Choices &choices);

    void check_variables(const std::vector<VariableDescription> &variables, const Container &owner);
    void check_draw(const DrawHints &draw, const Place &owner);

    FaultReport &report_;

private:
    void check_variable(const VariableDescription &variable, const Place &place, const Container &owner);
    void check_color(const std::string &color, const Place &place);
};

template <typename List>
Choices DescriptionChecks::choices_of(std::string_view kind, std::string_view list_name, const List &list,
                                      const Place &list_place) const {
    Choices choices{kind, list_name, {}, {}, !report_.is_unreadable(list_place)};
    for (std::size_t index = 0; index < list.size(); ++index) {
        const Place place = list_place.item(index);
        if (list[index].name.empty() && report_.is_unreadable(place.member("name"))) choices.all_known = false;
        choices.in_order.push_back(list[index].name);
    }
    choices.names.insert(choices.in_order.begin(), choices.in_order.end());
    return choices;
}

} // namespace kelhost
