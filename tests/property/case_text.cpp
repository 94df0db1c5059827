// case_text.cpp: writes and reads the line of a case.
#include "case_text.h"

#include <stdexcept>

#include "functions.h"

// Beyond what is ever generated, and small enough for nothing that is computed from it to overflow or fill the memory.
static constexpr int largest_pick = 99999;
static constexpr int largest_size = 99;

// Two functions may have one name: get_layer is the module's and layer instances'.
static std::string full_name(const Function &function) {
    return std::string(function.places.front()) + "." + function.name;
}

// ---- Writing ----

static void append(std::string &text, char before, int number) {
    text += before;
    text += std::to_string(number);
}

static void append(std::string &text, const Brick &brick) {
    append(text, '+', brick.kind);
    for (int number : {brick.owner, brick.pick, brick.name, brick.rows, brick.cols}) append(text, ',', number);
}

static void append(std::string &text, const Step &step) {
    append(text, '=', step.event);
    text += ',';
    text += full_name(all_functions()[static_cast<std::size_t>(step.function)]);
    for (int number : {step.place, step.missing, step.fault, step.nth, step.clone}) append(text, ',', number);
    for (const Argument &argument : step.arguments) {
        append(text, ':', argument.kind);
        append(text, ',', argument.pick);
    }
}

std::string case_text(const RandomCase &random_case) {
    std::string text = random_case.errors_return ? "returns" : "unwinds";
    for (const Brick &brick : random_case.bricks) append(text += ' ', brick);
    for (const Step &step : random_case.steps) append(text += ' ', step);
    return text;
}

// ---- Reading ----

namespace {

class LineReader {
public:
    explicit LineReader(std::string_view text) : rest_(text) {}

    RandomCase read() {
        RandomCase random_case;
        random_case.errors_return = read_error_mode();
        while (takes(" +")) random_case.bricks.push_back(read_brick());
        while (takes(" =")) random_case.steps.push_back(read_step());
        if (!rest_.empty())
            refuse(random_case.steps.empty() ? "\" +\", \" =\" or the line's end" : "\" =\", \":\" or the line's end");
        return random_case;
    }

private:
    [[noreturn]] void refuse(const std::string &expected) const {
        std::string found = rest_.empty() ? "the line's end" : '"' + std::string(rest_.substr(0, 20)) + '"';
        throw std::invalid_argument("found " + found + ", expected " + expected);
    }

    bool takes(std::string_view text) {
        if (!rest_.starts_with(text)) return false;
        rest_.remove_prefix(text.size());
        return true;
    }

    bool read_error_mode() {
        if (takes("unwinds")) return false;
        if (takes("returns")) return true;
        refuse("\"unwinds\" or \"returns\"");
    }

    int read_number(const char *what, int largest) {
        int number = 0;
        std::size_t digits = 0;
        for (; digits < rest_.size() && rest_[digits] >= '0' && rest_[digits] <= '9' && number <= largest; ++digits)
            number = number * 10 + (rest_[digits] - '0');
        if (digits == 0 || number > largest)
            refuse(std::string(what) + ", a number from 0 to " + std::to_string(largest));
        rest_.remove_prefix(digits);
        return number;
    }

    int read_next(const char *what, int largest) {
        if (!takes(",")) refuse(std::string("a comma and ") + what);
        return read_number(what, largest);
    }

    Brick read_brick() {
        Brick brick;
        brick.kind = read_number("a brick's kind", Brick::kind_count - 1);
        brick.owner = read_next("a brick's owner", largest_pick);
        brick.pick = read_next("a brick's pick", largest_pick);
        brick.name = read_next("a brick's name", largest_pick);
        brick.rows = read_next("a brick's rows", largest_size);
        brick.cols = read_next("a brick's columns", largest_size);
        return brick;
    }

    int read_function() {
        if (!takes(",")) refuse("a comma and a function's name");
        std::string_view name = rest_.substr(0, rest_.find(','));
        for (std::size_t i = 0; i < all_functions().size(); ++i) {
            if (name != full_name(all_functions()[i])) continue;
            rest_.remove_prefix(name.size());
            return static_cast<int>(i);
        }
        refuse("the name of a function");
    }

    Argument read_argument() {
        Argument argument;
        argument.kind = read_number("an argument's kind", Argument::kind_count - 1);
        argument.pick = read_next("an argument's pick", largest_pick);
        return argument;
    }

    Step read_step() {
        Step step;
        step.event = read_number("a step's event", Step::host_resizes);
        step.function = read_function();
        step.place = read_next("a step's place", largest_pick);
        step.missing = read_next("what a step misses", 2);
        step.fault = read_next("a step's fault", static_cast<int>(Fault::find_keys));
        step.nth = read_next("which request a step refuses", largest_pick);
        step.clone = read_next("a step's clone", largest_pick);
        while (takes(":")) step.arguments.push_back(read_argument());
        if (step.event != Step::call && step.arguments.size() < 2) refuse("two arguments of what the host does");
        return step;
    }

    std::string_view rest_;
};

} // namespace

RandomCase case_from_text(std::string_view text) { return LineReader(text).read(); }
