// staging.h: objects and variables that are being made and vanish again unless all of them could be.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <kelhost/value.h>

#include "object_registry.h"

namespace kelhost {

class Staging {
public:
    explicit Staging(ModelContext &context) noexcept : context_(context) {}
    ~Staging(); // takes back what was made, unless it was kept
    Staging(const Staging &) = delete;
    Staging &operator=(const Staging &) = delete;

    ModelContext &context() noexcept { return context_; }

    // Each throws std::bad_alloc when memory is out.
    template <typename T, typename... Arguments> T &make(Arguments &&...arguments) {
        nodes_.push_back(nullptr);
        T &made = context_.objects.add(std::make_unique<T>(std::forward<Arguments>(arguments)...));
        nodes_.back() = &made;
        return made;
    }
    void publish(NamedNode &node) { context_.objects.publish(node); }
    void create_variable(std::string key, DataType type, const Value &value); // unless there is one

    // From here on all is as if it had always been there. Gives the nodes that were made.
    std::vector<Node *> keep() noexcept;

private:
    ModelContext &context_;
    std::vector<Node *> nodes_;     // a null for one that could not be made
    std::vector<std::string> keys_; // an empty one for a variable that could not be made
};

} // namespace kelhost
