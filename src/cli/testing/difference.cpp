// difference.cpp: finds the longest common part of the lines of two texts, and writes the rest around it.
#include "difference.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

namespace kelhost {

namespace {

using Lines = std::vector<std::string_view>;

// A last line without an end is another line than one with it, and is shown so.
Lines split(std::string_view text) {
    Lines lines;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::size_t length = end == std::string_view::npos ? text.size() : end + 1;
        lines.push_back(text.substr(0, length));
        text.remove_prefix(length);
    }
    return lines;
}

struct Step {
    char mark; // ' ' in both, '-' before alone, '+' after alone
    std::string_view line;
};

using Steps = std::vector<Step>;

// Lengths of the longest common subsequences of what begins at line i of the one and line j of the other.
class CommonLengths {
public:
    CommonLengths(const Lines &before, const Lines &after)
        : columns_(after.size() + 1), lengths_((before.size() + 1) * columns_) {
        for (std::size_t i = before.size(); i-- > 0;)
            for (std::size_t j = after.size(); j-- > 0;)
                at(i, j) = before[i] == after[j] ? at(i + 1, j + 1) + 1 : std::max(at(i + 1, j), at(i, j + 1));
    }

    std::size_t &at(std::size_t i, std::size_t j) { return lengths_[i * columns_ + j]; }

private:
    std::size_t columns_;
    std::vector<std::size_t> lengths_;
};

Steps steps_between(const Lines &before, const Lines &after) {
    CommonLengths common(before, after);
    Steps steps;
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < before.size() || j < after.size()) {
        const bool both = i < before.size() && j < after.size();
        if (both && before[i] == after[j]) {
            steps.push_back({' ', before[i++]});
            ++j;
        } else if (j == after.size() || (both && common.at(i + 1, j) >= common.at(i, j + 1))) {
            steps.push_back({'-', before[i++]});
        } else {
            steps.push_back({'+', after[j++]});
        }
    }
    return steps;
}

// Steps from `begin` on to write as one piece: changes, and what is around them.
struct Piece {
    std::size_t begin;
    std::size_t end;
};

constexpr std::size_t context = 3;

std::vector<Piece> pieces_of(const Steps &steps) {
    std::vector<Piece> pieces;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        if (steps[i].mark == ' ') continue;
        const Piece piece{i > context ? i - context : 0, std::min(i + 1 + context, steps.size())};
        if (!pieces.empty() && piece.begin <= pieces.back().end)
            pieces.back().end = piece.end;
        else
            pieces.push_back(piece);
    }
    return pieces;
}

std::size_t count_without(const Steps &steps, std::size_t begin, std::size_t end, char mark) {
    const auto first = steps.begin() + static_cast<std::ptrdiff_t>(begin);
    const auto last = steps.begin() + static_cast<std::ptrdiff_t>(end);
    return static_cast<std::size_t>(std::count_if(first, last, [mark](const Step &step) { return step.mark != mark; }));
}

// "3,7": the first line and how many there are, of the text whose lines lack the mark.
std::string range(const Steps &steps, const Piece &piece, char others_mark) {
    const std::size_t before = count_without(steps, 0, piece.begin, others_mark);
    const std::size_t count = count_without(steps, piece.begin, piece.end, others_mark);
    return std::to_string(count == 0 ? before : before + 1) + "," + std::to_string(count);
}

void append(std::string &text, const Step &step) {
    text.append("\n").append(1, step.mark).append(step.line);
    if (step.line.ends_with('\n'))
        text.pop_back();
    else
        text += "\n\\ No newline at end of file";
}

} // namespace

std::string difference(const NamedText &before, const NamedText &after) {
    const Steps steps = steps_between(split(before.text), split(after.text));
    std::string text = "--- " + before.name + "\n+++ " + after.name;
    for (const Piece &piece : pieces_of(steps)) {
        text += "\n@@ -" + range(steps, piece, '+') + " +" + range(steps, piece, '-') + " @@";
        for (std::size_t i = piece.begin; i < piece.end; ++i) append(text, steps[i]);
    }
    return text;
}

} // namespace kelhost
