// lines.h: where the lines come from that a REPL reads.
#pragma once

#include <string>

namespace kelhost {

class Lines {
public:
    enum class Result { line, cancelled, end };

    virtual ~Lines() = default;
    virtual Result read(const char *prompt, std::string &line) = 0;
};

// Standard input as it is: no prompt, no editing.
class PlainLines final : public Lines {
public:
    Result read(const char *prompt, std::string &line) override;
};

} // namespace kelhost
