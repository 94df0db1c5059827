// model.h: the objects of the application: owns their records, resolves their names, clones and deletes them, and keeps
// records in step with the variables that scripts write.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <kel/kel.h>

#include <kelhost/description.h>

#include "data_manager.h"
#include "log.h"
#include "object_registry.h"

namespace kelhost {

// Most cells a table may have, so that a script's slip cannot eat the memory.
inline constexpr std::size_t most_cells = 65536;
// Deepest nesting of groups: what a device's stack bears.
inline constexpr int deepest_nesting = 32;

class Model {
public:
    // app: an application record with its maps set. build() fills the maps for screens and layers, the name, the path,
    // the size and the default screen; the model empties them again when it goes.
    Model(kl_application_t &app, DataManager &data, Log &log);
    ~Model();
    Model(const Model &) = delete;
    Model &operator=(const Model &) = delete;

    // Makes all objects and variables. The description must be free of faults (see validate.h).
    void build(const ApplicationDescription &description);

    // Resolves a qualified name in constant time. "" and unknown names give null. The cells of a table share their
    // template's name, which gives the first of them in row order.
    kl_object_t *find(std::string_view qualified_name) const noexcept;

    // The name under which find() gives this object; "" for a template and for what is not of this model. A cell
    // answers with the name that it shares.
    std::string qualified_name(const kl_object_t *object) const;

    // Of a cell: its template's. Empty ones for an object without; null for what is not of this model.
    const DrawHints *draw_hints(const kl_object_t *object) const noexcept;

    // Why a variable of this key cannot be created; nothing when it can. A key is an application variable ("mode"), an
    // object's ("main.ok.kld_x") or a cell's that is in the table's grid ("main.list.text.3.2").
    std::optional<std::string> refuses_key(std::string_view key) const;

    // Clones a control, table or group with all that it contains and all variables, as the last child of `parent`, a
    // layer or group. Returns the clone's qualified name, good until the next call, or null after a warning that says
    // why.
    const std::string *clone(std::string_view source, std::string_view name, std::string_view parent);

    // Deletes a control, table or group with all that it contains and all variables. False after a warning that says
    // why.
    bool remove(std::string_view name);

    // Deleted records stay readable, found by nobody and empty, until this is called: lists of objects may still point
    // to them while a script runs. To be called when no script runs.
    void reclaim() noexcept;

private:
    ObjectRegistry objects_;
    ModelContext context_;
    std::optional<int> listener_; // of all variables, once built
    std::string name_;            // what the application's record points to
    std::string path_;
};

} // namespace kelhost
