// key_index.h: finds the objects and variables of a description by qualified name and key, before any of them is made.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <kelhost/description.h>

#include "names.h"
#include <kelhost/closest_name.h>

namespace kelhost {

class KeyIndex {
public:
    // description: must outlive the index.
    explicit KeyIndex(const ApplicationDescription &description);

    // Whether an object has this qualified name, or a variable this key: an application's ("mode"), an object's
    // ("main.ok.kld_x") or a cell's ("main.list.text.3.2").
    bool knows(std::string_view target);

    // Offers all objects, and the variables of the application and of the object that `target` begins with.
    void offer_names(std::string_view target, ClosestName &closest) const;

private:
    using Variables = std::vector<VariableDescription>;
    struct Object {
        Owner owner;
        const Variables *variables = nullptr; // null: of cells, whose variables have cell keys
        const ElementDescription *table = nullptr;
    };

    void add_elements(const std::vector<ElementDescription> &elements, const std::string &container, int depth);
    const Object *find(std::string_view name) const noexcept;
    bool has_variable(const Object &object, std::string_view name);
    bool has_own_variable(const Variables &variables, std::string_view name);
    bool is_cell_key(std::string_view target);
    bool has_cell_variable(const ElementDescription &table, std::size_t row, std::size_t col, std::string_view name);

    std::map<std::string, Object, std::less<>> objects_; // by qualified name
    // Made when first asked for: few handlers are about variables, and one list may have thousands.
    std::unordered_map<const Variables *, std::unordered_set<std::string_view>> variable_names_;
};

} // namespace kelhost
