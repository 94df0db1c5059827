// data_slots.cpp: the operations of kl_data_mgr_t over the data manager: C arguments in, C results out.
// Keeps exceptions in: what runs out of memory reports failure.
#include <algorithm>
#include <climits>
#include <cstring>

#include <kel/sdk/kelal_alloc.h>

#include "c_border.h"
#include "conversion.h"
#include "data_manager.h"

namespace kelhost {

namespace {

// Copies a number into `bytes` as the C type of its format, or out of it.
template <typename Number> void put(double value, void *bytes) {
    const auto number = static_cast<Number>(value);
    std::memcpy(bytes, &number, sizeof number);
}
template <typename Number> double take(const void *bytes) {
    Number number;
    std::memcpy(&number, bytes, sizeof number);
    return static_cast<double>(number);
}

// How a number type is laid out, in the order of DataType.
struct Layout {
    std::uint32_t nbytes;
    void (*put)(double value, void *bytes);
    double (*take)(const void *bytes);
};
template <typename Number> constexpr Layout layout_of = {sizeof(Number), put<Number>, take<Number>};
constexpr Layout layouts[] = {layout_of<std::int8_t>,   layout_of<std::uint8_t>, layout_of<std::int16_t>,
                              layout_of<std::uint16_t>, layout_of<std::int32_t>, layout_of<std::uint32_t>,
                              layout_of<double>};
static_assert(std::size(layouts) == static_cast<std::size_t>(DataType::string), "one layout a number type");

// A variable's value as C callers see it: a number in the C type of its format, or a string with its end.
class CValue {
public:
    explicit CValue(const DataManager::Variable &variable) {
        if (const auto *text = std::get_if<std::string>(&variable.value)) {
            bytes_ = text->c_str();
            nbytes_ = static_cast<std::uint32_t>(text->size() + 1);
        } else {
            const Layout &layout = layouts[static_cast<std::size_t>(variable.type)];
            layout.put(std::get<double>(variable.value), number_);
            bytes_ = number_;
            nbytes_ = layout.nbytes;
        }
    }
    CValue(const CValue &) = delete;
    CValue &operator=(const CValue &) = delete;

    const void *bytes() const { return bytes_; }
    std::uint32_t nbytes() const { return nbytes_; }

private:
    alignas(double) unsigned char number_[sizeof(double)] = {};
    const void *bytes_;
    std::uint32_t nbytes_;
};

Input text_input(const void *data, std::uint32_t nbytes) {
    Input input;
    input.kind = Input::Kind::text;
    input.text = {static_cast<const char *>(data), nbytes};
    input.text = input.text.substr(0, input.text.find('\0'));
    return input;
}

Input number_input(double number) {
    Input input;
    input.kind = Input::Kind::number;
    input.number = number;
    return input;
}

} // namespace

struct DataManager::Slots {
    static int init(kl_data_mgr_t *, kl_application_t *) { return 0; } // a manager is ready when it is made
    static void fini(kl_data_mgr_t *mgr) { of(mgr).forget_everybody(); }

    static int set_data(kl_data_mgr_t *mgr, const char *key, const char *format, const void *data, uint32_t nbytes) {
        if (key == nullptr || format == nullptr || data == nullptr) return -1;
        return at_c_border(-1, [=] { return of(mgr).write_bytes(key, format, data, nbytes) ? 0 : -1; });
    }

    static const char *get_format(kl_data_mgr_t *mgr, const char *key) {
        const Variable *variable = key != nullptr ? of(mgr).find(key) : nullptr;
        return variable != nullptr ? data_type_name(variable->type) : nullptr;
    }

    static int get_data_value(kl_data_mgr_t *mgr, const char *key, void *value, uint32_t nbytes) {
        if (key == nullptr || value == nullptr) return -1;
        return at_c_border(-1, [=] {
            const Variable *variable = of(mgr).read(key);
            if (variable == nullptr) return -1;
            const CValue own(*variable);
            if (own.nbytes() > nbytes) return -1;
            std::memcpy(value, own.bytes(), own.nbytes());
            return 0;
        });
    }

    static void *get_data(kl_data_mgr_t *mgr, const char *key, uint32_t *nbytes) {
        if (nbytes != nullptr) *nbytes = 0;
        if (key == nullptr) return nullptr;
        return at_c_border<void *>(nullptr, [=]() -> void * {
            const Variable *variable = of(mgr).read(key);
            if (variable == nullptr) return nullptr;
            const CValue own(*variable);
            void *copy = kelal_realloc(nullptr, own.nbytes());
            if (copy == nullptr) return nullptr;
            if (nbytes != nullptr) *nbytes = own.nbytes();
            return std::memcpy(copy, own.bytes(), own.nbytes());
        });
    }

    static void release_data(kl_data_mgr_t *, void *data) { kelal_free(data); }

    static char **find_for_prefix(kl_data_mgr_t *mgr, const char *prefix, int *count) {
        if (count != nullptr) *count = 0;
        if (prefix == nullptr || count == nullptr) return nullptr;
        const DataManager &self = of(mgr);
        std::size_t found = 0;
        self.for_each_longer(prefix, [&found](const Node &) { ++found; });
        if (found == 0 || found > INT_MAX) return nullptr;
        auto **keys = static_cast<char **>(kelal_realloc(nullptr, found * sizeof(char *)));
        if (keys == nullptr) return nullptr;
        char **next = keys;
        // The interface's type is not const; the keys are all the same.
        self.for_each_longer(prefix, [&next](const Node &node) { *next++ = const_cast<char *>(node.first.c_str()); });
        *count = static_cast<int>(found);
        return keys;
    }

    static int get_type(kl_data_mgr_t *mgr, const char *key) {
        const Variable *variable = key != nullptr ? of(mgr).find(key) : nullptr;
        return variable != nullptr ? static_cast<int>(variable->type) : -1;
    }

    static int add_change_listener(kl_data_mgr_t *mgr, const char *key, kl_data_listener_t listener, void *user_data) {
        if (key == nullptr) return add_function(mgr, Subscription::Scope::every, "", listener, user_data);
        return add_function(mgr, Subscription::Scope::key, key, listener, user_data);
    }

    static int rem_change_listener(kl_data_mgr_t *mgr, kl_data_listener_t listener, void *user_data) {
        return of(mgr).remove_function(listener, user_data) ? 0 : -1;
    }

    static void hold_change_listener(kl_data_mgr_t *mgr) { of(mgr).hold(); }

    static void release_change_listener(kl_data_mgr_t *mgr) {
        at_c_border(-1, [=] {
            of(mgr).release();
            return 0;
        });
    }

    static int will_fire_event(kl_data_mgr_t *mgr, const char *key) {
        return key != nullptr && of(mgr).is_watched(key) ? 1 : 0;
    }

    static void force_notifications(kl_data_mgr_t *mgr) {
        at_c_border(-1, [=] {
            of(mgr).force();
            return 0;
        });
    }

    static int get_largest_key(kl_data_mgr_t *mgr) {
        std::size_t largest = 0;
        for (const Node &node : of(mgr).variables_) largest = std::max(largest, node.first.size());
        return static_cast<int>(largest);
    }

    static int traverse(kl_data_mgr_t *mgr, kl_data_visitor_t visitor, void *user_data) {
        if (visitor == nullptr) return 0;
        for (const Node &node : of(mgr).variables_) {
            const CValue value(node.second);
            const int result = visitor(node.first.c_str(), data_type_name(node.second.type), value.bytes(), user_data);
            if (result != 0) return result;
        }
        return 0;
    }

    static int get_metrics(kl_data_mgr_t *mgr, kl_data_metrics_t *metrics) {
        if (metrics == nullptr) return -1;
        const DataManager &self = of(mgr);
        *metrics = {};
        metrics->variables = static_cast<std::uint32_t>(self.variables_.size());
        for (const Node &node : self.variables_) metrics->nbytes += CValue(node.second).nbytes();
        metrics->listeners = static_cast<std::uint32_t>(
            std::count_if(self.subscriptions_.begin(), self.subscriptions_.end(),
                          [](const Subscription &subscription) { return !subscription.removed; }));
        return 0;
    }

    static int bind_event(kl_data_mgr_t *mgr, const char *key, const char *event_name) {
        if (key == nullptr || event_name == nullptr) return -1;
        return at_c_border(-1, [=] {
            of(mgr).bind(key, event_name);
            return 0;
        });
    }

    static int add_miss_listener(kl_data_mgr_t *mgr, kl_data_listener_t listener, void *user_data) {
        return add_function(mgr, Subscription::Scope::misses, "", listener, user_data);
    }

    static int get_format_index(kl_data_mgr_t *, const char *format) {
        const auto type = format != nullptr ? data_type_from_name(format) : std::nullopt;
        return type ? static_cast<int>(*type) : -1;
    }

    static int create_data_entry_typed(kl_data_mgr_t *mgr, const char *key, int format_index) {
        if (key == nullptr || format_index < 0 || format_index >= data_type_count) return -1;
        return at_c_border(-1, [=] {
            DataManager &self = of(mgr);
            if (self.find(key) != nullptr || !self.may_create(key)) return -1;
            const auto type = static_cast<DataType>(format_index);
            return self.create(key, type, type == DataType::string ? Value(std::string()) : Value(0.0)) ? 0 : -1;
        });
    }

private:
    static int add_function(kl_data_mgr_t *mgr, Subscription::Scope scope, const char *key, kl_data_listener_t function,
                            void *user_data) {
        if (function == nullptr) return -1;
        return at_c_border(-1, [=] {
            of(mgr).subscribe({0, scope, key, nullptr, function, user_data});
            return 0;
        });
    }
};

DataManager::DataManager(Log &log, IoManager &io) : log_(log), io_(io) {
    record_.self = this;
    record_.nbytes = sizeof(kl_data_mgr_t);
    record_.init = Slots::init;
    record_.fini = Slots::fini;
    record_.set_data = Slots::set_data;
    record_.get_format = Slots::get_format;
    record_.get_data_value = Slots::get_data_value;
    record_.get_data = Slots::get_data;
    record_.release_data = Slots::release_data;
    record_.find_for_prefix = Slots::find_for_prefix;
    record_.get_type = Slots::get_type;
    record_.add_change_listener = Slots::add_change_listener;
    record_.rem_change_listener = Slots::rem_change_listener;
    record_.hold_change_listener = Slots::hold_change_listener;
    record_.release_change_listener = Slots::release_change_listener;
    record_.will_fire_event = Slots::will_fire_event;
    record_.force_notifications = Slots::force_notifications;
    record_.get_largest_key = Slots::get_largest_key;
    record_.traverse = Slots::traverse;
    record_.get_metrics = Slots::get_metrics;
    record_.bind_event = Slots::bind_event;
    record_.add_miss_listener = Slots::add_miss_listener;
    record_.get_format_index = Slots::get_format_index;
    record_.create_data_entry_typed = Slots::create_data_entry_typed;
}

DataManager::~DataManager() = default;

DataManager &DataManager::of(kl_data_mgr_t *record) noexcept { return *static_cast<Record *>(record)->self; }

bool DataManager::write_bytes(std::string_view key, std::string_view format, const void *data, std::uint32_t nbytes) {
    const std::optional<DataType> type = data_type_from_name(format);
    if (!type) {
        log_.format(KL_LOG_WARNING, "Cannot write to %s: no format \"%s\"", std::string(key).c_str(),
                    std::string(format).c_str());
        return false;
    }
    if (*type == DataType::string) return write_typed(key, text_input(data, nbytes), type) != WriteResult::refused;

    const Layout &layout = layouts[static_cast<std::size_t>(*type)];
    if (nbytes != layout.nbytes) {
        log_.format(KL_LOG_WARNING, "Cannot write to %s: %u bytes, but %s has %u", std::string(key).c_str(),
                    static_cast<unsigned>(nbytes), data_type_name(*type), static_cast<unsigned>(layout.nbytes));
        return false;
    }
    return write_typed(key, number_input(layout.take(data)), type) != WriteResult::refused;
}

} // namespace kelhost
