// completion.cpp: reads the line up to the cursor, and asks the application for what fits there.
#include "completion.h"

#include "../object_names.h"
#include "colon_commands.h"
#include "lua_names.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <utility>

namespace kelhost {

namespace {

bool is_name_letter(char letter) { return std::isalnum(static_cast<unsigned char>(letter)) != 0 || letter == '_'; }

bool is_path_letter(char letter) { return is_name_letter(letter) || letter == '.'; }

// Where the letters that the text ends with begin.
template <typename Predicate> std::size_t begin_of_last(std::string_view text, const Predicate &belongs) {
    std::size_t begin = text.size();
    while (begin > 0 && belongs(text[begin - 1])) --begin;
    return begin;
}

std::string_view without_blanks_at_end(std::string_view text) {
    return text.substr(0, text.find_last_not_of(" \t") + 1);
}

// Where the quote stands that is still open at the end; npos for none.
std::size_t open_quote(std::string_view text) {
    std::size_t open = std::string_view::npos;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const char letter = text[index];
        if (open == std::string_view::npos)
            open = letter == '"' || letter == '\'' ? index : open;
        else if (letter == '\\')
            ++index;
        else if (letter == text[open])
            open = std::string_view::npos;
    }
    return open;
}

// "kel.set_value" for `x = kel.set_value("a", `, "ok:get_value" for `ok:get_value(`.
std::string_view called_function(std::string_view before_quote) {
    const std::size_t bracket = before_quote.rfind('(');
    if (bracket == std::string_view::npos) return {};
    const std::string_view before = without_blanks_at_end(before_quote.substr(0, bracket));
    return before.substr(begin_of_last(before, [](char letter) { return is_path_letter(letter) || letter == ':'; }));
}

// Methods of handles that take the names of variables.
bool takes_variables(std::string_view method) {
    return method == "get_value" || method == "set_value" || method == "get_data" || method == "key";
}

// Of the object whose handle the path leads to, and of those in it.
std::vector<std::string> variables_of(Application &app, std::string_view path) {
    const std::optional<std::string> prefix = key_prefix_of(app, path);
    if (!prefix) return {};
    std::vector<std::string> names = app.keys(*prefix);
    for (std::string &name : names) name.erase(0, prefix->size());
    return names;
}

Completions make(std::size_t begin, std::string_view typed, std::vector<std::string> words) {
    std::erase_if(words, [typed](const std::string &word) { return !word.starts_with(typed); });
    std::sort(words.begin(), words.end());
    words.erase(std::unique(words.begin(), words.end()), words.end());
    return {begin, std::move(words)};
}

Completions complete_string(Application &app, std::string_view line, std::size_t quote) {
    const std::string_view typed = line.substr(quote + 1);
    const std::string_view function = called_function(line.substr(0, quote));
    if (const std::size_t colon = function.rfind(':');
        colon != std::string_view::npos && takes_variables(function.substr(colon + 1)))
        return make(quote + 1, typed, variables_of(app, function.substr(0, colon)));
    const bool keys = function == "kel.get_value" || function == "kel.set_value";
    return make(quote + 1, typed, keys ? app.keys(typed) : object_names(app));
}

std::vector<std::string> screen_names(const Application &app) {
    std::vector<std::string> names;
    for (const ScreenDescription &screen : app.description().screens) names.push_back(screen.name);
    return names;
}

Completions complete_command(Application &app, std::string_view line) {
    const std::size_t blank = line.find(' ');
    if (blank == std::string_view::npos) return make(0, line, command_words());
    const std::string_view command = line.substr(0, blank);
    const std::size_t begin = line.find_last_of(command == ":event" ? " :" : " ") + 1;
    const std::string_view typed = line.substr(begin);
    if (command == ":snapshot" && begin == blank + 1) return make(begin, typed, screen_names(app));
    if (command == ":vars") return make(begin, typed, app.keys(typed));
    if (command == ":tree" || (command == ":event" && line[begin - 1] == ':'))
        return make(begin, typed, object_names(app));
    return {};
}

// Methods of the handle that a path leads to, fields of the table, or globals.
Completions complete_code(Application &app, std::string_view line) {
    const std::size_t begin = begin_of_last(line, is_name_letter);
    const std::string_view typed = line.substr(begin);
    const std::string_view before = line.substr(0, begin);
    const bool method = before.ends_with(':');
    std::string_view path;
    if (method || before.ends_with('.')) {
        const std::string_view owner = before.substr(0, before.size() - 1);
        path = owner.substr(begin_of_last(owner, is_path_letter));
        if (path.empty()) return {}; // what a call or an index gives is not known without doing it
    }
    std::vector<std::string> words = names_within(app, path, method);
    if (!typed.starts_with("__")) std::erase_if(words, [](const std::string &word) { return word.starts_with("__"); });
    return make(begin, typed, std::move(words));
}

} // namespace

Completions complete(Application &app, std::string_view before_cursor) {
    if (is_command(before_cursor)) {
        const std::size_t colon = before_cursor.find(':');
        Completions found = complete_command(app, before_cursor.substr(colon));
        found.begin += colon;
        return found;
    }
    if (const std::size_t quote = open_quote(before_cursor); quote != std::string_view::npos)
        return complete_string(app, before_cursor, quote);
    return complete_code(app, before_cursor);
}

} // namespace kelhost
