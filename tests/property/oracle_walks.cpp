// oracle_walks.cpp: how the oracle walks an application.
#include "oracle.h"

#include <functional>
#include <set>

int Oracle::traverse(ObjectIndex index, const Predicate &work) const {
    const Object &object = app_.objects[static_cast<std::size_t>(index)];
    switch (object.type) {
    case table_code:
        return traverse_table(object, work);
    case group_code:
    case layer_code:
    case screen_code:
        return traverse_list(object.list, work);
    case instance_code:
        return traverse_list(app_.objects[static_cast<std::size_t>(object.layer)].list, work);
    case application_code:
        return traverse_map(app_.screen_map, work);
    default:
        return 0;
    }
}

int Oracle::traverse_table(const Object &table, const Predicate &work) const {
    for (int y = 0; y < table.rows; ++y) {
        for (int x = 0; x < table.cols; ++x) {
            ObjectIndex cell = table.cells[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)];
            int result = work(app_.objects[static_cast<std::size_t>(cell)].name, cell);
            if (result) return result;
        }
    }
    return 0;
}

// An entry's name is its own, that of an instance the layer's.
int Oracle::traverse_list(const List &list, const Predicate &work) const {
    for (ObjectIndex entry : list) {
        if (entry == nobody) return 0;
        const Object &object = app_.objects[static_cast<std::size_t>(entry)];
        const Object &named =
            object.type == instance_code ? app_.objects[static_cast<std::size_t>(object.layer)] : object;
        int result = work(named.name, entry);
        if (result) return result;
    }
    return 0;
}

int Oracle::traverse_map(const std::vector<std::pair<std::string, ObjectIndex>> &map, const Predicate &work) {
    int found = 0;
    for (const auto &[key, object] : map) {
        found = work(key, object);
        if (found) break;
    }
    return found;
}

Oracle::Traverser Oracle::any_traverser() const {
    return [this](ObjectIndex object, const Predicate &work) { return traverse(object, work); };
}

Oracle::Traverser Oracle::layer_traverser() const {
    return [this](ObjectIndex, const Predicate &work) { return traverse_map(app_.layer_map, work); };
}

int Oracle::complex_step(const std::string &name, ObjectIndex object, ComplexTraverse &record) const {
    int matched = record.work(name, object);
    if (matched) record.result = object;
    if (!record.recurse) return matched ? record.stop_on_find : 0;
    int stopped = traverse(object, [&](const std::string &child_name, ObjectIndex child) {
        return complex_step(child_name, child, record);
    });
    return stopped ? record.stop_on_find : 0;
}

ObjectIndex Oracle::find_parent_under(const Traverser &traverser, ObjectIndex child, int recursive) const {
    Predicate has_child = [this, child](const std::string &, ObjectIndex container) {
        return traverse(container, [child](const std::string &, ObjectIndex entry) { return entry == child ? 1 : 0; });
    };
    ComplexTraverse record{1, has_child, nobody, recursive};
    traverser(the_application,
              [&](const std::string &name, ObjectIndex object) { return complex_step(name, object, record); });
    return record.result;
}

// Whether a container is visited once below the layers and nothing else lists any of what it lists.
bool Oracle::holds_alone(ObjectIndex container) const {
    std::set<ObjectIndex> children;
    traverse(container, [&](const std::string &, ObjectIndex child) { return children.insert(child), 0; });
    int visits = 0;
    bool alone = true;
    std::function<void(ObjectIndex)> visit = [&](ObjectIndex visited) {
        visits += visited == container;
        traverse(visited, [&](const std::string &, ObjectIndex child) {
            if (visited != container && children.contains(child)) alone = false;
            visit(child);
            return 0;
        });
    };
    traverse_map(app_.layer_map, [&](const std::string &, ObjectIndex layer) { return visit(layer), 0; });
    return alone && visits == 1;
}

// Whether the names of a container's children are made from one another: found out with a list of its own.
bool Oracle::names_together(ObjectIndex container, const List &list) {
    const Object &object = app_.objects[static_cast<std::size_t>(container)];
    if (object.type == instance_code) container = object.layer;
    const int type = app_.objects[static_cast<std::size_t>(container)].type;
    return list.size() > 1 && type <= layer_code && create_list(1) && holds_alone(container);
}

// The screens with an instance of a layer of the same name.
std::optional<Oracle::List> Oracle::layer_parents(ObjectIndex layer) {
    std::optional<List> list = create_list(1);
    const std::string &wanted = app_.objects[static_cast<std::size_t>(layer)].name;
    Predicate add_if_shows = [&](const std::string &, ObjectIndex screen) {
        int shows = traverse(screen, [&](const std::string &name, ObjectIndex) { return name == wanted ? 1 : 0; });
        if (shows && list) list->push_back(screen);
        return shows ? 1 : 0;
    };
    ComplexTraverse record{0, add_if_shows, nobody, 0};
    traverse(the_application,
             [&](const std::string &name, ObjectIndex screen) { return complex_step(name, screen, record); });
    return list;
}

std::optional<Oracle::List> Oracle::list_of(ObjectIndex object) {
    std::optional<List> list = create_list(1);
    if (list && object != nobody) list->push_back(object);
    return list;
}

std::optional<Oracle::List> Oracle::children(ObjectIndex object) {
    std::optional<List> list = create_list(1);
    traverse(object, [&](const std::string &, ObjectIndex child) {
        if (list) list->push_back(child);
        return 0;
    });
    return list;
}

std::optional<Oracle::List> Oracle::parents(ObjectIndex object) {
    switch (app_.objects[static_cast<std::size_t>(object)].type) {
    case control_code:
    case table_code:
    case template_code:
    case group_code:
        return list_of(find_parent_under(layer_traverser(), object, 1));
    case layer_code:
        return layer_parents(object);
    case instance_code:
        return list_of(find_parent_under(any_traverser(), object, 0));
    case screen_code:
        return list_of(the_application);
    case application_code:
        return create_list(0);
    default:
        return std::nullopt;
    }
}
