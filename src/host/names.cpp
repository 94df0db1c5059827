// names.cpp: names of objects, variables and Lua functions.
#include "names.h"

#include <algorithm>
#include <iterator>

#include "validate.h"

namespace kelhost {

namespace {

constexpr unsigned bit(Owner owner) { return 1U << static_cast<unsigned>(owner); }

constexpr unsigned placed = bit(Owner::layer_instance) | bit(Owner::control) | bit(Owner::table) | bit(Owner::group);
constexpr unsigned sized = bit(Owner::layer) | bit(Owner::layer_instance) | bit(Owner::control) | bit(Owner::table);

struct HostVariableRow {
    HostVariable variable;
    unsigned owners; // bits
};
constexpr HostVariableRow host_variables[] = {
    {{"kld_x", "x"},           placed                    },
    {{"kld_y", "y"},           placed                    },
    {{"kld_width", "width"},   sized                     },
    {{"kld_height", "height"}, sized                     },
    {{"kld_hidden", "hidden"}, placed                    },
    {{"kld_alpha", "alpha"},   bit(Owner::layer_instance)},
    {{"kld_rows", "rows"},     bit(Owner::table)         },
    {{"kld_cols", "cols"},     bit(Owner::table)         },
};

bool is_letter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool is_name_character(char character) {
    return is_letter(character) || (character >= '0' && character <= '9') || character == '_';
}

constexpr std::string_view lua_keywords[] = {
    "and",   "break", "do",  "else", "elseif", "end",    "false", "for",  "function", "if",    "in",
    "local", "nil",   "not", "or",   "repeat", "return", "then",  "true", "until",    "while",
};

bool is_lua_name(std::string_view name) {
    const bool is_number_first = !name.empty() && name.front() >= '0' && name.front() <= '9';
    return !name.empty() && !is_number_first && is_valid_name(name)
           && std::find(std::begin(lua_keywords), std::end(lua_keywords), name) == std::end(lua_keywords);
}

} // namespace

bool is_valid_name(std::string_view name) noexcept { return std::all_of(name.begin(), name.end(), is_name_character); }

const HostVariable *host_variable(Owner owner, std::string_view name) noexcept {
    for (const HostVariableRow &row : host_variables)
        if (row.variable.name == name && (row.owners & bit(owner)) != 0) return &row.variable;
    return nullptr;
}

std::vector<HostVariable> host_variables_of(Owner owner) {
    std::vector<HostVariable> variables;
    for (const HostVariableRow &row : host_variables)
        if ((row.owners & bit(owner)) != 0) variables.push_back(row.variable);
    return variables;
}

bool is_function_name(std::string_view name) noexcept {
    const std::size_t dot = name.find('.');
    if (dot == std::string_view::npos) return is_lua_name(name);
    return is_lua_name(name.substr(0, dot)) && is_lua_name(name.substr(dot + 1));
}

void Scope::add(std::string_view name, const Use &use) {
    if (!name.empty() && is_valid_name(name)) uses_.emplace(name, use);
}

const Scope::Use *Scope::first_use(std::string_view name) const noexcept {
    const auto use = uses_.find(name);
    return use != uses_.end() ? &use->second : nullptr;
}

std::string Scope::path_of(const Use &use, const Place &container) {
    const Place list = container.member(use.list);
    const Place item = list.item(use.item);
    if (use.of_template == Use::itself) return item.path();
    const Place templates = item.member("templates");
    return templates.item(use.of_template).path();
}

} // namespace kelhost
