// line_editor.cpp: the one file that speaks with the line editing library, whose state is global.
#include "line_editor.h"

#include "../output.h"
#include "ctrl_c.h"

#include <algorithm>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>
#include <utility>
#include <vector>

#include <poll.h>
#include <pthread.h>
#include <unistd.h>

#include <editline/readline.h>

namespace kelhost {

namespace {

// A word of the library's is what stands between two of these. Completions begin where they will; they are cut to it.
constexpr char word_breaks[] = " \t\n\"'`\\@$><=;|&{}()[],.:+-*/%^#~!?";
constexpr int most_completions = 100000; // more than that, and the library would ask before it shows them

Completer active_completer;

struct Free {
    void operator()(void *block) const noexcept { std::free(block); }
};

// Waits for a byte; false when a signal came instead. Ctrl-C reaches the tool in the wait alone, so that a press in the
// midst of other work is not forgotten when the wait begins.
bool wait_for_byte() {
    sigset_t interrupt;
    sigset_t before;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    pthread_sigmask(SIG_BLOCK, &interrupt, &before);
    pollfd keys = {STDIN_FILENO, POLLIN, 0};
    const bool came = !CtrlC::pressed() && ppoll(&keys, 1, nullptr, &before) == 1;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return came;
}

// A key, which may be several bytes. EOF when the line is cancelled, or standard input has ended.
int read_key(std::FILE *) {
    std::mbstate_t state = {};
    for (;;) {
        if (!wait_for_byte()) {
            if (CtrlC::pressed()) return EOF;
            rl_resize_terminal();
            continue;
        }
        char byte = 0;
        if (::read(STDIN_FILENO, &byte, 1) != 1) return EOF;
        wchar_t key = 0;
        const std::size_t used = std::mbrtowc(&key, &byte, 1, &state);
        if (used == static_cast<std::size_t>(-1)) state = {}; // no character: the byte is passed over
        if (used <= 1) return static_cast<int>(key);
    }
}

// How many bytes so many characters of the line take.
std::size_t bytes_of(const char *line, int characters) {
    std::mbstate_t state = {};
    const std::size_t length = std::strlen(line);
    std::size_t position = 0;
    for (; characters > 0 && position < length; --characters) {
        const std::size_t used = std::mbrlen(line + position, length - position, &state);
        position += used >= static_cast<std::size_t>(-2) ? 1 : std::max<std::size_t>(used, 1);
    }
    return position;
}

std::size_t common_length(const std::string &one, const std::string &other) {
    return static_cast<std::size_t>(std::mismatch(one.begin(), one.end(), other.begin(), other.end()).first
                                    - one.begin());
}

// The library's form: what all have in common, then each, then null; all of it the library's to free.
char **to_matches(const std::vector<std::string> &words) {
    if (words.empty()) return nullptr;
    std::size_t common = words.front().size();
    for (const std::string &word : words) common = std::min(common, common_length(words.front(), word));
    auto **const matches = static_cast<char **>(std::calloc(words.size() + 2, sizeof(char *)));
    if (matches == nullptr) return nullptr;
    matches[0] = ::strndup(words.front().c_str(), common);
    for (std::size_t index = 0; index < words.size(); ++index) matches[index + 1] = ::strdup(words[index].c_str());
    return matches;
}

// begin, end: of the library's word, in characters.
char **complete_word(int begin, int end) {
    const std::string line(rl_line_buffer, bytes_of(rl_line_buffer, end));
    const std::size_t word_begin = bytes_of(rl_line_buffer, begin);
    Completions found = active_completer(line);
    for (std::string &word : found.words) {
        if (found.begin >= word_begin)
            word.insert(0, line, word_begin, found.begin - word_begin);
        else
            word.erase(0, word_begin - found.begin);
    }
    return to_matches(found.words);
}

char **attempt_completion(const char *, int begin, int end) {
    rl_attempted_completion_over = 1; // no names of files where nothing fits
    try {
        return complete_word(begin, end);
    } catch (...) {
        return nullptr;
    }
}

bool is_blank(const std::string &line) { return line.find_first_not_of(" \t") == std::string::npos; }

} // namespace

LineEditor::LineEditor(Completer completer) {
    std::setlocale(LC_CTYPE, ""); // letters of several bytes
    active_completer = std::move(completer);
    rl_readline_name = const_cast<char *>("kel");
    rl_catch_signals = 0;
    rl_getc_function = read_key;
    rl_basic_word_break_characters = word_breaks;
    rl_completion_append_character = '\0';
    rl_completion_query_items = most_completions;
    rl_attempted_completion_function = attempt_completion;
    using_history();
    stifle_history(static_cast<int>(HistoryFile::most_lines));
    for (const std::string &line : history_.lines()) add_history(line.c_str());
}

LineEditor::~LineEditor() { active_completer = nullptr; }

Lines::Result LineEditor::read(const char *prompt, std::string &line) {
    CtrlC::forget();
    const std::unique_ptr<char, Free> typed(readline(prompt));
    if (typed == nullptr) {
        print(CtrlC::pressed() ? "^C\n" : "\n");
        return CtrlC::pressed() ? Result::cancelled : Result::end;
    }
    line = typed.get();
    if (!is_blank(line) && line != last_line_) remember(line);
    return Result::line;
}

void LineEditor::remember(const std::string &line) {
    last_line_ = line;
    add_history(line.c_str());
    history_.append(line);
}

} // namespace kelhost
