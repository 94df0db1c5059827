// names.h: which names the objects and variables of a description may have, and which are taken.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "place.h"

namespace kelhost {

// What variables belong to.
enum class Owner : std::uint8_t {
    application,
    screen,
    layer,
    layer_instance,
    control,
    table,
    group,
    table_template,
    cell
};

// A variable that the host makes of a member of the application file, such as "kld_x" of "x".
struct HostVariable {
    std::string_view name;
    std::string_view member;
};

inline constexpr std::string_view host_prefix = "kld_";

// The host's variable of this name that such an owner has; null when it has none.
const HostVariable *host_variable(Owner owner, std::string_view name) noexcept;

// All that such an owner has.
std::vector<HostVariable> host_variables_of(Owner owner);

// Whether the name can be a Lua function's: "on_press" or, in a table, "ui.on_press".
bool is_function_name(std::string_view name) noexcept;

// The names in one container: what stands in an application, on a screen, or in a layer or group. As no name has a dot,
// qualified names are unique when the names in each container are.
class Scope {
public:
    // One item of a list of the container's, or a template of that item, whose cells have their names here.
    struct Use {
        static constexpr std::size_t itself = static_cast<std::size_t>(-1);
        std::string_view list;
        std::size_t item = 0;
        std::size_t of_template = itself;
        bool operator==(const Use &) const = default;
    };

    // The first use of a name counts; names that may not be are not taken note of. name: must outlive the scope.
    void add(std::string_view name, const Use &use);

    const Use *first_use(std::string_view name) const noexcept;

    // The path of what uses a name. container: whose scope this is.
    static std::string path_of(const Use &use, const Place &container);

private:
    std::unordered_map<std::string_view, Use> uses_;
};

} // namespace kelhost
