// pattern.cpp: reads a Lua pattern from its beginning to its end, as matching does where everything fits.
#include "pattern.h"

#include <cstddef>
#include <vector>

#include <lua.hpp>

namespace kelhost {

namespace {

class PatternReader {
public:
    explicit PatternReader(std::string_view pattern) : rest_(pattern) {}

    std::string fault() {
        static_cast<void>(skip('^'));
        while (fault_.empty() && !rest_.empty()) read_item();
        if (fault_.empty() && innermost_open() < captures_.size()) fault_ = "unfinished capture";
        return fault_;
    }

private:
    enum class Capture : unsigned char { open, closed };

    bool skip(char wanted) {
        if (!rest_.starts_with(wanted)) return false;
        rest_.remove_prefix(1);
        return true;
    }

    // 0 at the end.
    char next() {
        if (rest_.empty()) return 0;
        const char found = rest_.front();
        rest_.remove_prefix(1);
        return found;
    }

    // captures_.size() when none is open.
    std::size_t innermost_open() const {
        for (std::size_t index = captures_.size(); index-- > 0;)
            if (captures_[index] == Capture::open) return index;
        return captures_.size();
    }

    void read_item() {
        switch (next()) {
        case '(':
            open_capture();
            break;
        case ')':
            close_capture();
            break;
        case '[':
            read_set();
            break;
        case '%':
            read_escape(next());
            break;
        default:
            break; // stands for itself, or repeats what was before
        }
    }

    void open_capture() {
        if (captures_.size() == LUA_MAXCAPTURES) fault_ = "too many captures";
        captures_.push_back(skip(')') ? Capture::closed : Capture::open); // () is a position
    }

    void close_capture() {
        const std::size_t index = innermost_open();
        if (index < captures_.size())
            captures_[index] = Capture::closed;
        else
            fault_ = "invalid pattern capture";
    }

    // A "]" that stands first is an element.
    void read_set() {
        static_cast<void>(skip('^'));
        do {
            if (rest_.empty()) {
                fault_ = "malformed pattern (missing ']')";
                return;
            }
            if (next() == '%') static_cast<void>(next());
        } while (!rest_.starts_with(']'));
        static_cast<void>(next());
    }

    void read_escape(char kind) {
        if (kind == 0) {
            fault_ = "malformed pattern (ends with '%')";
        } else if (kind == 'b') {
            if (rest_.size() < 2) fault_ = "unbalanced pattern";
            rest_.remove_prefix(rest_.size() < 2 ? rest_.size() : 2);
        } else if (kind == 'f') {
            if (skip('['))
                read_set();
            else
                fault_ = "missing '[' after '%f' in pattern";
        } else if (kind >= '0' && kind <= '9') {
            const auto number = static_cast<std::size_t>(kind - '0');
            if (number == 0 || number > captures_.size() || captures_[number - 1] == Capture::open)
                fault_ = "invalid capture index";
        }
    }

    std::string_view rest_;
    std::vector<Capture> captures_;
    std::string fault_;
};

} // namespace

std::string fault_of_pattern(std::string_view pattern) { return PatternReader(pattern).fault(); }

} // namespace kelhost
