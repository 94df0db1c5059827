// staging.cpp: objects and variables that are being made and vanish again unless all of them could be.
#include "staging.h"

namespace kelhost {

Staging::~Staging() {
    for (const std::string &key : keys_) {
        if (!key.empty()) context_.data.erase(key);
    }
    for (Node *node : nodes_) {
        if (node != nullptr) context_.objects.discard(*node);
    }
}

void Staging::create_variable(std::string key, DataType type, const Value &value) {
    keys_.emplace_back(); // room first, so that no variable can be left behind
    if (context_.data.create(key, type, value)) {
        keys_.back() = std::move(key);
    } else {
        keys_.pop_back();
    }
}

std::vector<Node *> Staging::keep() noexcept {
    keys_.clear();
    return std::exchange(nodes_, {});
}

} // namespace kelhost
