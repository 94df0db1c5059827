// rehearsal.cpp: from picks to actions, in the state that the actions before have led to.
#include "rehearsal.h"

#include "functions.h"

namespace {

enum { most_first_handles = 40 };

class Rehearsal {
public:
    Rehearsal(const RandomCase &random_case, const Description &description, const Spectator &spectator)
        : case_(random_case), oracle_(description, random_case.errors_return), spectator_(spectator) {}

    void run() {
        if (!take_first_handles()) return;
        for (const Step &step : case_.steps)
            if (!(step.event == Step::call ? call(step) : host_acts(step))) return;
    }

private:
    bool take_first_handles() {
        Action action;
        action.is_preparation = true;
        action.place = "keldom";
        action.function = "get_application";
        if (!play(action)) return false;
        action.function = "get_object";
        std::vector<std::string> names;
        for (const auto &[name, object] : oracle_.description().names) names.push_back(name);
        if (names.size() > most_first_handles) names.resize(most_first_handles);
        for (const std::string &name : names) {
            action.arguments = {Value::of(name)};
            if (!play(action)) return false;
        }
        return true;
    }

    bool call(const Step &step) {
        const Function &function = all_functions()[static_cast<std::size_t>(step.function)];
        Action action;
        action.place = function.places[static_cast<std::size_t>(step.place) % function.places.size()];
        action.function = function.name;
        for (const Argument &argument : step.arguments)
            action.arguments.push_back(resolve_argument(argument, oracle_.description(), handles_));
        keep_to_what_is_defined(action);
        action.circumstances = circumstances(step, action);
        return play(action);
    }

    // Calls whose outcome is anybody's guess are replaced by their nearest neighbours.
    static void keep_to_what_is_defined(Action &action) {
        bool is_typed = action.place == "keldom" && action.function != "get_object";
        for (Value &value : action.arguments) {
            int which = static_cast<int>(value.number_value);
            if (value.type == Value::foreign && !is_typed) value.number_value = which % first_lenient_foreign;
        }
        bool frees_handle =
            action.function == "__gc" && !action.arguments.empty() && action.arguments[0].type == Value::handle;
        if (frees_handle) action.arguments[0] = Value::of_boolean(true);
    }

    Circumstances circumstances(const Step &step, const Action &action) const {
        Circumstances chosen;
        chosen.without_application = step.missing == 1;
        chosen.without_data_manager = step.missing == 2;
        chosen.fault = static_cast<Fault>(step.fault);
        chosen.nth = static_cast<unsigned>(step.nth);
        bool checks_list = action.function == "get_children" || action.function == "get_parents";
        if (chosen.fault == Fault::make_list && !checks_list) chosen.fault = Fault::none;
        chosen.clone_succeeds = step.clone != 0;
        if (chosen.clone_succeeds)
            chosen.clone_name = step.clone % 7 ? picked_name(oracle_.description(), step.clone) : "nothing.here";
        return chosen;
    }

    bool play(const Action &action) {
        Outcome expected = oracle_.call(action.place, action.function, action.arguments, action.circumstances);
        keep_handles();
        return spectator_(action, expected, oracle_.live_names());
    }

    // Of the last call's results, those that are new.
    void keep_handles() {
        for (const Value &result : oracle_.results()) {
            keep(result);
            for (const auto &[key, value] : result.entries) keep(value);
        }
    }

    void keep(Value value) {
        if (value.type != Value::handle || value.is_argument) return;
        value.slot = static_cast<int>(handles_.size());
        handles_.push_back(value);
    }

    bool host_acts(const Step &step) {
        const Description &now = oracle_.description();
        int first = step.arguments.at(0).pick, second = step.arguments.at(1).pick;
        Action action;
        action.event = step.event;
        int count = static_cast<int>(now.objects.size()) - 1;
        if (count > 0) action.object = 1 + first % count;
        switch (step.event) {
        case Step::collect:
            oracle_.collect(static_cast<int>(handles_.size()));
            break;
        case Step::host_removes:
            if (action.object == nobody) return true;
            oracle_.remove(action.object);
            break;
        case Step::host_renames:
            if (second % 3 == 0) action.object = nobody;
            action.text = picked_name(now, second);
            oracle_.resolve(action.text, action.object);
            break;
        case Step::host_writes:
            action.text = picked_key(now, first);
            action.value = picked_number_or_text(second);
            oracle_.set_variable(action.text, action.value);
            break;
        case Step::host_forgets:
            action.text = picked_key(now, first);
            oracle_.remove_variable(action.text);
            break;
        default:
            if (!choose_size(action, first, second)) return true;
        }
        return spectator_(action, Outcome{}, oracle_.live_names());
    }

    bool choose_size(Action &action, int first, int second) {
        std::vector<ObjectIndex> tables;
        const std::vector<Object> &objects = oracle_.description().objects;
        for (std::size_t i = 0; i < objects.size(); ++i)
            if (objects[i].type == table_code) tables.push_back(static_cast<ObjectIndex>(i));
        if (tables.empty()) return false;
        action.object = tables[static_cast<std::size_t>(first) % tables.size()];
        const auto &cells = objects[static_cast<std::size_t>(action.object)].cells;
        action.rows = second % static_cast<int>(cells.size() + 1);
        action.cols = second / 10 % static_cast<int>(cells.front().size() + 1);
        oracle_.resize_table(action.object, action.rows, action.cols);
        return true;
    }

    const RandomCase &case_;
    Oracle oracle_;
    const Spectator &spectator_;
    Values handles_;
};

} // namespace

void rehearse(const RandomCase &random_case, const Description &description, const Spectator &spectator) {
    Rehearsal(random_case, description, spectator).run();
}
