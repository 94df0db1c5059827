// description_checks.cpp: names, numbers, references, variables and drawing hints.
#include "description_checks.h"

#include <utility>

#include "validate.h"
#include <kelhost/closest_name.h>

namespace kelhost {

namespace {

constexpr std::string_view name_text = "a name of letters, digits and \"_\"";

bool may_be_name(std::string_view name) { return !name.empty() && is_valid_name(name); }

bool is_color(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdefABCDEF";
    return text.size() == 7 && text.front() == '#' && text.find_first_not_of(digits, 1) == std::string_view::npos;
}

std::string found_text(const Value &value) {
    const auto *text = std::get_if<std::string>(&value);
    return text != nullptr ? quoted(*text) : number_text(std::get<double>(value));
}

bool fits(const Value &value, DataType type) {
    const auto *number = std::get_if<double>(&value);
    if (type == DataType::string) return number == nullptr;
    return number != nullptr && type_holds(type, *number);
}

} // namespace

void DescriptionChecks::check_name(const std::string &name, const Place &place, const Container &container,
                                   const Scope::Use &use) {
    if (!may_be_name(name)) return report_.add(place, mismatch(quoted(name), name_text));
    const Scope::Use *first = container.scope->first_use(name);
    const bool is_taken = first != nullptr && *first != use;
    if (!is_taken && host_variable(container.owner, name) == nullptr) return;
    std::string message = "duplicate name " + quoted(container.qualify(name));
    // Who reads of a template's name needs to know why another's matters to it.
    if (use.of_template != Scope::Use::itself) message += " of the template's cells";
    message += ", first used by ";
    message += is_taken ? Scope::path_of(*first, container.place) : "a variable that the host makes";
    report_.add(place, std::move(message));
}

void DescriptionChecks::check_range(const Place &owner, std::string_view member, std::int32_t number, Range range) {
    if (!range.holds(number)) report_.add(owner.member(member), mismatch(number_text(number), range_text(range)));
}

void DescriptionChecks::check_range(const Place &owner, std::string_view member, std::optional<std::int32_t> number,
                                    Range range) {
    if (number) check_range(owner, member, *number, range);
}

void DescriptionChecks::check_reference(const std::string &name, const Place &place, const Choices &choices) {
    if (!choices.all_known || choices.names.contains(name)) return;
    ClosestName closest(name);
    if (report_.may_guess())
        for (const std::string_view candidate : choices.in_order) closest.offer(candidate);
    const std::string expected = "the name of one in \"" + std::string(choices.list_name) + '"';
    report_.add(place, "unknown " + std::string(choices.kind) + ' ' + quoted(name) + closest.text(expected));
}

void DescriptionChecks::check_variables(const std::vector<VariableDescription> &variables, const Container &owner) {
    if (variables.empty()) return;
    const Place list = owner.place.member("variables");
    std::unordered_set<std::string_view> names;
    names.reserve(variables.size());
    for (const VariableDescription &variable : variables) {
        const Place place = list.member(variable.name);
        if (names.insert(variable.name).second)
            check_variable(variable, place, owner);
        else
            report_.add(place, "duplicate variable " + quoted(variable.name) + ", expected it once in an object");
    }
}

void DescriptionChecks::check_variable(const VariableDescription &variable, const Place &place,
                                       const Container &owner) {
    const std::string &name = variable.name;
    if (!may_be_name(name)) {
        report_.add(place, mismatch(quoted(name), name_text));
    } else if (const HostVariable *known = host_variable(owner.owner, name)) {
        report_.add(place, "the host makes variable " + quoted(name) + ", expected its value as member "
                               + quoted(known->member));
    } else if (name.starts_with(host_prefix)) {
        report_.add(place, mismatch(quoted(name), "a name that does not begin with " + quoted(host_prefix)
                                                      + ", which the host keeps for its own variables"));
    } else if (const Scope::Use *use = owner.scope != nullptr ? owner.scope->first_use(name) : nullptr) {
        report_.add(place, "the variable's key " + quoted(owner.qualify(name)) + " is the name of "
                               + Scope::path_of(*use, owner.place) + ", expected another name");
    }
    if (!fits(variable.value, variable.type))
        report_.add(place, mismatch(found_text(variable.value), type_text(variable.type)));
}

void DescriptionChecks::check_draw(const DrawHints &draw, const Place &owner) {
    const Place place = owner.member("draw");
    check_color(draw.fill, place.member("fill"));
    check_color(draw.color, place.member("color"));
    if (draw.font_size != 0) check_range(place, "font_size", draw.font_size, font_sizes);
    const bool is_known = draw.align.empty() || draw.align == "left" || draw.align == "center" || draw.align == "right";
    if (!is_known)
        report_.add(place.member("align"), mismatch(quoted(draw.align), choice_text({"left", "center", "right"})));
}

void DescriptionChecks::check_color(const std::string &color, const Place &place) {
    if (!color.empty() && !is_color(color)) report_.add(place, mismatch(quoted(color), "a color such as \"#20a0ff\""));
}

} // namespace kelhost
