// history_file.h: the lines that a user typed, kept from one run to the next.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace kelhost {

// $XDG_STATE_HOME/kel/history, or ~/.local/state/kel/history: a line of it is a line that was typed. Where there can be
// no such file nothing is kept, and nothing is said: history is a convenience.
class HistoryFile {
public:
    static constexpr std::size_t most_lines = 1000;

    // Makes the file when there is none, for the user alone.
    HistoryFile();

    // The newest lines, oldest first. A file that has grown to twice as many is cut to these.
    std::vector<std::string> lines() const;

    void append(const std::string &line) const;

private:
    std::string path_; // "" for none
};

} // namespace kelhost
