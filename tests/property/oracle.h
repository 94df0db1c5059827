// oracle.h: what the plug-in is expected to do, worked out on plain data, step by step and without haste. A second
// opinion: nothing of the plug-in is in it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "description.h"

class Oracle {
public:
    // errors_return: the host's way of raising comes back instead of unwinding.
    Oracle(Description description, bool errors_return) : app_(std::move(description)), errors_return_(errors_return) {}

    // place: where a function of that name is taken from, as in functions.h.
    Outcome call(const std::string &place, const std::string &function, const Values &arguments,
                 const Circumstances &circumstances);

    // What the last call returned, as values; nothing when it raised.
    const Values &results() const { return results_; }

    // Names of handles that Lua has not collected yet.
    int live_names() const { return live_names_; }
    void collect(int kept_handles) { live_names_ = kept_handles; }

    // ---- What the host does to its model by itself ----
    void remove(ObjectIndex object);
    void resolve(const std::string &name, ObjectIndex object); // nobody: to nothing
    void set_variable(const std::string &key, const Value &value);
    void remove_variable(const std::string &key) { app_.variables.erase(key); }
    void resize_table(ObjectIndex table, int rows, int cols);

    // The name, when every request for memory succeeds; leaves no trace.
    std::optional<std::string> name_of(ObjectIndex object);

    const Description &description() const { return app_; }

private:
    struct Unwind {
        std::string text;
    };
    struct Name {
        std::string text;
        std::size_t block; // bytes of the block that the text is in
    };
    using List = std::vector<ObjectIndex>;
    using Predicate = std::function<int(const std::string &name, ObjectIndex object)>;
    using Traverser = std::function<int(ObjectIndex object, const Predicate &work)>;
    struct ComplexTraverse {
        int stop_on_find;
        Predicate work;
        ObjectIndex result;
        int recurse;
    };
    using Variables = std::vector<std::string>;

    // ---- The channels and the host ----
    void line(const std::string &text) { lines_.push_back(text); }
    void log(const std::string &text);
    void raise(const std::string &text);
    bool fails(Fault fault);
    bool has_application() const { return !circumstances_.without_application; }
    bool has_data_manager() const { return !circumstances_.without_data_manager; }
    ObjectIndex find_object(const std::string &name);
    bool read_variable(const std::string &key, Value &value);
    void write_variable(const std::string &key, const Value &value);
    std::optional<List> create_list(int capacity);

    // ---- Handles and names ----
    bool get_dom_object();
    std::optional<Name> duplicate(const std::string &text);
    std::optional<Name> join(const Name &pre, const std::string &post);
    std::optional<Name> qualified_name(ObjectIndex object);
    std::optional<Name> qualified_control_name(ObjectIndex control);
    std::optional<Name> sibling_name(const std::string &first_name, ObjectIndex first, ObjectIndex object);
    int push_object(ObjectIndex object);
    int push_named(ObjectIndex object, const std::optional<Name> &name);
    int push_list(const List &list, ObjectIndex container = nobody);
    ObjectIndex object_from_stack();

    // ---- Walks ----
    int traverse(ObjectIndex object, const Predicate &work) const;
    int traverse_table(const Object &table, const Predicate &work) const;
    int traverse_list(const List &list, const Predicate &work) const;
    static int traverse_map(const std::vector<std::pair<std::string, ObjectIndex>> &map, const Predicate &work);
    Traverser any_traverser() const;
    Traverser layer_traverser() const;
    int complex_step(const std::string &name, ObjectIndex object, ComplexTraverse &record) const;
    ObjectIndex find_parent_under(const Traverser &traverser, ObjectIndex child, int recursive) const;
    bool holds_alone(ObjectIndex container) const;
    bool names_together(ObjectIndex container, const List &list);
    std::optional<List> layer_parents(ObjectIndex layer);
    std::optional<List> list_of(ObjectIndex object);
    std::optional<List> children(ObjectIndex object);
    std::optional<List> parents(ObjectIndex object);

    // ---- Lua's stack of the call: positions from 1 ----
    Value at(int position) const;
    int top() const { return static_cast<int>(stack_.size()); }
    void replace(int position, const Value &value);
    int give(const Value &value);

    // ---- The functions: each returns how many results it gave ----
    int dispatch(const std::string &place, const std::string &function);
    int navigate(const std::string &place, const std::string &function);
    int handle_values(const std::string &function);
    int get_object();
    int get_typed();
    int get_application();
    int get_all(bool screens);
    int get_relatives(bool parents);
    int get_layer();
    int get_name_or_type(bool name);
    int to_text();
    int equals();
    int collect_handle();
    int key();
    int cell_key();
    int get_value();
    int get_data();
    int set_value();
    int set_data();
    int get_variables();
    int get_properties(const Variables &variables, bool as_boolean);
    int set_properties(const std::string &function);
    int clone();
    int remove_by_handle();

    std::string key_of(const std::string &variable) const;
    Value read(const std::string &variable); // the internal read: raises without a data manager
    long read_integer(const std::string &variable);
    void write_list(const Variables &variables);
    int checked_anchor(int position, const std::string &message);
    void anchored_move(int value, int anchor, bool horizontal);
    void anchored_resize(int value, int anchor, bool horizontal, std::string &slot);

    Description app_;
    bool errors_return_;
    Circumstances circumstances_;
    unsigned faults_seen_ = 0;
    std::vector<std::string> lines_;
    Values stack_;
    Values results_;
    int live_names_ = 0;
};

// Lua's conversions.
bool is_string(const Value &value); // numbers too
bool is_number(const Value &value); // numeric strings too
std::string string_of(const Value &value);
long integer_of(const Value &value);

// As the host writes an argument down.
std::string host_text(const Value &value);
