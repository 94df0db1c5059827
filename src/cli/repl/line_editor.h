// line_editor.h: lines typed at a terminal: edited, completed with TAB, remembered from one run to the next.
#pragma once

#include "completion.h"
#include "history_file.h"
#include "lines.h"

#include <functional>
#include <string>
#include <string_view>

namespace kelhost {

// What can stand at the cursor, given the line as far as that.
using Completer = std::function<Completions(std::string_view before_cursor)>;

// One at a time. Ctrl-C, which a CtrlC must have taken over, cancels the line.
class LineEditor final : public Lines {
public:
    explicit LineEditor(Completer completer);
    ~LineEditor() override;
    LineEditor(const LineEditor &) = delete;
    LineEditor &operator=(const LineEditor &) = delete;

    // A line that is not blank and not like the one before is remembered.
    Result read(const char *prompt, std::string &line) override;

private:
    void remember(const std::string &line);

    const HistoryFile history_;
    std::string last_line_;
};

} // namespace kelhost
