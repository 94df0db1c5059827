// validate.cpp: walks a description in the order of its records and reports what makes no sense together.
// A description may come from a file, then faults of shape are reported already, or from a program, then nothing is.
#include "validate.h"

#include <optional>
#include <string>
#include <string_view>

#include "description_checks.h"
#include "fault_report.h"
#include "file.h"
#include "key_index.h"
#include "model.h"
#include "names.h"
#include "place.h"
#include "table_check.h"
#include "wording.h"
#include <kelhost/closest_name.h>

namespace kelhost {

namespace {

Scope scope_of(const std::vector<ElementDescription> &elements) {
    Scope scope;
    for (std::size_t item = 0; item < elements.size(); ++item) {
        scope.add(elements[item].name, {"children", item});
        for (std::size_t index = 0; index < elements[item].templates.size(); ++index)
            scope.add(elements[item].templates[index].name, {"children", item, index});
    }
    return scope;
}

Scope scope_of(const ApplicationDescription &application) {
    Scope scope;
    for (std::size_t item = 0; item < application.layers.size(); ++item)
        scope.add(application.layers[item].name, {"layers", item});
    for (std::size_t item = 0; item < application.screens.size(); ++item)
        scope.add(application.screens[item].name, {"screens", item});
    return scope;
}

Scope scope_of(const ScreenDescription &screen) {
    Scope scope;
    for (std::size_t item = 0; item < screen.layers.size(); ++item)
        scope.add(screen.layers[item].layer, {"layers", item});
    return scope;
}

// What plug-ins and scripts get as a C string.
bool is_text(std::string_view text) { return !text.empty() && text.find('\0') == std::string_view::npos; }

bool has_text_hints(const DrawHints &draw) {
    return !draw.color.empty() || !draw.text.empty() || draw.font_size != 0 || !draw.align.empty();
}

// The walk. What is checked of every record alike is in DescriptionChecks.
class Validator : private DescriptionChecks {
public:
    Validator(const ApplicationDescription &description, FaultReport &report)
        : DescriptionChecks(report), description_(description) {}

    void check_application();

private:
    void check_layer(const LayerDescription &layer, const Place &place, const Container &application,
                     const Scope::Use &use);
    void check_elements(const std::vector<ElementDescription> &elements, const Container &container);
    void check_element(const ElementDescription &element, const Place &place, const Container &container,
                       const Scope::Use &use);
    void check_group(const ElementDescription &group, const Place &place, const Container &container);
    void check_kind(const ElementDescription &element, const Place &place);
    void check_screen(const ScreenDescription &screen, const Place &place, const Container &application,
                      const Scope::Use &use, const Choices &layers);
    void check_instance(const LayerInstanceDescription &instance, const Place &place, const Container &screen,
                        const Scope::Use &use, const Choices &layers);
    void check_script(const std::string &script, const Place &place);
    void check_handler(const HandlerDescription &handler, const Place &place);
    void check_target(const std::string &target, const Place &place);

    const ApplicationDescription &description_;
    std::optional<KeyIndex> keys_; // made for the first handler with a target
    int group_depth_ = 0;          // how many groups surround what is checked
};

void Validator::check_application() {
    const Place top;
    const Place size = top.member("size");
    const Place layers = top.member("layers");
    const Place screens = top.member("screens");
    const Place scripts = top.member("scripts");
    const Place handlers = top.member("handlers");
    const Scope scope = scope_of(description_);
    const Container application{top, "", Owner::application, &scope};

    if (!is_text(description_.name))
        report_.add(top.member("name"), mismatch(quoted(description_.name), "the application's name"));
    check_range(size, "width", description_.width, screen_sizes);
    check_range(size, "height", description_.height, screen_sizes);
    if (!description_.default_screen.empty())
        check_reference(description_.default_screen, top.member("default_screen"),
                        choices_of("screen", "screens", description_.screens, screens));
    check_variables(description_.variables, application);
    for (std::size_t item = 0; item < description_.layers.size(); ++item)
        check_layer(description_.layers[item], layers.item(item), application, {"layers", item});
    const Choices layer_choices = choices_of("layer", "layers", description_.layers, layers);
    for (std::size_t item = 0; item < description_.screens.size(); ++item)
        check_screen(description_.screens[item], screens.item(item), application, {"screens", item}, layer_choices);
    for (std::size_t item = 0; item < description_.scripts.size(); ++item)
        check_script(description_.scripts[item], scripts.item(item));
    for (std::size_t item = 0; item < description_.handlers.size(); ++item)
        check_handler(description_.handlers[item], handlers.item(item));
}

void Validator::check_layer(const LayerDescription &layer, const Place &place, const Container &application,
                            const Scope::Use &use) {
    const Scope scope = scope_of(layer.children);
    const Container container{place, layer.name, Owner::layer, &scope};
    check_name(layer.name, place.member("name"), application, use);
    check_range(place, "width", layer.width, sizes);
    check_range(place, "height", layer.height, sizes);
    check_variables(layer.variables, container);
    check_draw(layer.draw, place);
    if (has_text_hints(layer.draw))
        report_.add(place.member("draw"), "found hints for a text, expected \"fill\" alone for a layer");
    check_elements(layer.children, container);
}

void Validator::check_elements(const std::vector<ElementDescription> &elements, const Container &container) {
    const Place list = container.place.member("children");
    for (std::size_t item = 0; item < elements.size(); ++item)
        check_element(elements[item], list.item(item), container, {"children", item});
}

void Validator::check_element(const ElementDescription &element, const Place &place, const Container &container,
                              const Scope::Use &use) {
    check_name(element.name, place.member("name"), container, use);
    check_range(place, "x", element.geometry.x, coordinates);
    check_range(place, "y", element.geometry.y, coordinates);
    check_range(place, "width", element.geometry.width, sizes);
    check_range(place, "height", element.geometry.height, sizes);
    check_draw(element.draw, place);
    check_kind(element, place);
    if (element.kind == ElementKind::group) return check_group(element, place, container);
    const bool is_table = element.kind == ElementKind::table;
    check_variables(element.variables,
                    {place, container.qualify(element.name), is_table ? Owner::table : Owner::control});
    if (is_table) TableCheck(report_, element, place).check(container, use);
}

void Validator::check_group(const ElementDescription &group, const Place &place, const Container &container) {
    const Scope scope = scope_of(group.children);
    const Container inside{place, container.qualify(group.name), Owner::group, &scope};
    check_variables(group.variables, inside);
    if (group_depth_ == deepest_nesting) return report_.add(place, too_deep_text());
    ++group_depth_;
    check_elements(group.children, inside);
    --group_depth_;
}

// A file cannot give an element what its kind does not have; a program can, and nothing would come of it.
void Validator::check_kind(const ElementDescription &element, const Place &place) {
    if (report_.is_unreadable(place.member("type"))) return;
    const bool is_group = element.kind == ElementKind::group;
    const bool is_table = element.kind == ElementKind::table;
    if (is_group && (element.geometry.width != 0 || element.geometry.height != 0))
        report_.add(place, "found a group with a size, expected a position alone");
    if (is_group && (!element.draw.fill.empty() || has_text_hints(element.draw)))
        report_.add(place.member("draw"), "found drawing hints, expected none for a group");
    if (!is_group && !element.children.empty())
        report_.add(place.member("children"), "found children, expected them in a group alone");
    if (!is_table && (element.rows != 0 || element.cols != 0 || !element.templates.empty() || !element.cells.empty()))
        report_.add(place, "found rows, columns, templates or cells, expected them in a table alone");
}

void Validator::check_screen(const ScreenDescription &screen, const Place &place, const Container &application,
                             const Scope::Use &use, const Choices &layers) {
    const Scope scope = scope_of(screen);
    const Container container{place, screen.name, Owner::screen, &scope};
    check_name(screen.name, place.member("name"), application, use);
    check_variables(screen.variables, container);
    const Place list = place.member("layers");
    for (std::size_t item = 0; item < screen.layers.size(); ++item)
        check_instance(screen.layers[item], list.item(item), container, {"layers", item}, layers);
}

void Validator::check_instance(const LayerInstanceDescription &instance, const Place &place, const Container &screen,
                               const Scope::Use &use, const Choices &layers) {
    const Place layer = place.member("layer");
    if (!layers.names.contains(instance.layer))
        check_reference(instance.layer, layer, layers);
    else if (is_valid_name(instance.layer))
        check_name(instance.layer, layer, screen, use);
    check_range(place, "x", instance.x, coordinates);
    check_range(place, "y", instance.y, coordinates);
    check_range(place, "width", instance.width, sizes);
    check_range(place, "height", instance.height, sizes);
    check_range(place, "alpha", instance.alpha, alphas);
    check_variables(instance.variables, {place, screen.qualify(instance.layer), Owner::layer_instance});
}

void Validator::check_script(const std::string &script, const Place &place) {
    const std::string path = join_path(description_.folder, script);
    std::string why;
    if (script.empty())
        report_.add(place, mismatch("\"\"", "the path of a Lua script"));
    else if (!read_file(path, why))
        report_.add(place, "cannot read \"" + path + "\" (" + why + "), expected a Lua script");
}

void Validator::check_handler(const HandlerDescription &handler, const Place &place) {
    if (!is_text(handler.event))
        report_.add(place.member("event"), mismatch(quoted(handler.event), "the name of an event"));
    check_target(handler.target, place.member("target"));
    if (!is_function_name(handler.function))
        report_.add(place.member("function"),
                    mismatch(quoted(handler.function), "a Lua function such as \"on_press\" or \"ui.on_press\""));
}

void Validator::check_target(const std::string &target, const Place &place) {
    if (target.empty() || report_.may_lack_names()) return;
    if (!keys_) keys_.emplace(description_);
    if (keys_->knows(target)) return;
    ClosestName closest(target);
    if (report_.may_guess()) keys_->offer_names(target, closest);
    report_.add(place, "unknown target " + quoted(target)
                           + closest.text("the qualified name of an object or the key of a variable"));
}

} // namespace

void validate(const ApplicationDescription &description, Diagnostics &faults) {
    FaultReport report(description.file, faults);
    Validator(description, report).check_application();
}

} // namespace kelhost
