// test_plugin_loader.cpp: loading plug-ins, from shared objects and linked in, and every way in which that fails.
// Where the build gives no folder of small plug-ins (KEL_FIXTURE_PLUGIN_FOLDER), only those that are linked in.
#include <string>

#include <doctest/doctest.h>

#include "scripted_application.h"
#include "temporary_folder.h"

using kelhost::Options;
using kelhost::Plugin;
using kelhost::PluginLoader;
using kelhost::Runtime;
using kelhost::StartResult;

namespace {

// A plug-in that is linked in. Each of its steps is logged with the name in its plug-in data.
int init(kl_application_t *app, const char *args, void *name) {
    kel_app_log(app, KL_LOG_INFO, "%s: init(%s)", static_cast<const char *>(name), args != nullptr ? args : "null");
    return 0;
}
int failing_init(kl_application_t *app, const char *, void *name) {
    kel_app_log(app, KL_LOG_INFO, "%s: failing init", static_cast<const char *>(name));
    return 4;
}
void fini(kl_application_t *app, void *name) {
    kel_app_log(app, KL_LOG_INFO, "%s: fini", static_cast<const char *>(name));
}

int fill(kl_plugin_state_t *state, const char *name) {
    static char data[8][16];
    static int used = 0;
    char *const copy = data[used++ % 8];
    std::snprintf(copy, sizeof data[0], "%s", name);
    state->name = kelal_strdup(name);
    state->plugin_data = copy;
    state->init = init;
    state->fini = fini;
    state->version = {7, 1, 2, 3};
    return 0;
}
int first(kl_plugin_state_t *state) { return fill(state, "first"); }
int second(kl_plugin_state_t *state) { return fill(state, "second"); }
int refuses_to_start(kl_plugin_state_t *state) {
    fill(state, "refuses");
    state->init = failing_init;
    return 0;
}
int fails_at_once(kl_plugin_state_t *state) {
    fill(state, "fails");
    return -1;
}
int of_another_version(kl_plugin_state_t *state) {
    fill(state, "old");
    state->version = {6, 1, 0, 12};
    return 0;
}
int without_init(kl_plugin_state_t *state) {
    fill(state, "idle");
    state->init = nullptr;
    return 0;
}
int without_fini_or_name(kl_plugin_state_t *state) {
    fill(state, "quiet");
    state->fini = nullptr;
    kelal_free(state->name);
    state->name = nullptr;
    return 0;
}
int checks_that_the_record_is_clear(kl_plugin_state_t *state) {
    const bool clear = state->name == nullptr && state->plugin_data == nullptr && state->init == nullptr
                       && state->fini == nullptr && state->version.major == 0 && state->service_number == 0;
    return clear ? fill(state, "clear") : 99;
}

// An application that is built and not started, to load into by hand.
struct Loading {
    BlockLedger ledger;
    Capture capture;
    Runtime runtime{small_application(), capture.attach({})};
    PluginLoader loader{runtime.record};

    std::string load(int (*entry)(kl_plugin_state_t *), std::string path = {}, std::string args = {}) {
        return loader.load({.path = std::move(path), .entry = entry, .args = std::move(args)});
    }
};

} // namespace

TEST_CASE("a plug-in that is linked in is started with its arguments, null when there are none") {
    Loading loading;
    CHECK(loading.load(first, "", "a=1") == "");
    CHECK(loading.load(second) == "");
    CHECK(loading.capture.take_log() == "info: first: init(a=1)\ninfo: second: init(null)");
    loading.loader.finish();
    CHECK(loading.capture.take_log() == "info: second: fini\ninfo: first: fini");
}

TEST_CASE("plug-ins are told once that the application ends, the last loaded first") {
    Loading loading;
    loading.load(first);
    loading.load(second);
    loading.capture.take_log();
    loading.loader.finish();
    loading.loader.finish();
    loading.loader.unload();
    loading.loader.unload();
    CHECK(loading.capture.take_log() == "info: second: fini\ninfo: first: fini");
}

TEST_CASE("a loader that goes tells its plug-ins") {
    Capture capture;
    Runtime runtime(small_application(), capture.attach({}));
    {
        PluginLoader loader(runtime.record);
        CHECK(loader.load({.path = "", .entry = first, .args = ""}) == "");
    }
    CHECK(capture.take_log() == "info: first: init(null)\ninfo: first: fini");
}

TEST_CASE("the entry point gets a record that is clear") {
    Loading loading;
    CHECK(loading.load(checks_that_the_record_is_clear) == "");
    loading.loader.finish();
    CHECK(loading.capture.take_log() == "info: clear: init(null)\ninfo: clear: fini");
}

TEST_CASE("an entry point that fails is reported, and its init is not called") {
    Loading loading;
    CHECK(loading.load(fails_at_once)
          == "Cannot load plug-in that is linked in: KEL_PLUGIN_CREATE_FUNC returned -1, expected 0");
    loading.loader.finish();
}

TEST_CASE("an init that fails is reported, and its fini is not called") {
    Loading loading;
    CHECK(loading.load(refuses_to_start, "some.so") == "Cannot load plug-in \"some.so\": init returned 4, expected 0");
    loading.loader.finish();
    CHECK(loading.capture.take_log() == "info: refuses: failing init");
}

TEST_CASE("a plug-in for another interface is reported with its version, and its init is not called") {
    Loading loading;
    CHECK(loading.load(of_another_version)
          == "Cannot load plug-in that is linked in: made for host interface version 6.1.0.12, expected 7");
    loading.loader.finish();
}

TEST_CASE("a plug-in without init is refused, one without fini or name is not") {
    Loading loading;
    CHECK(loading.load(without_init) == "Cannot load plug-in that is linked in: it has no init operation");
    CHECK(loading.load(without_fini_or_name) == "");
    loading.loader.finish();
    CHECK(loading.capture.take_log() == "info: quiet: init(null)");
}

TEST_CASE("after a plug-in that was refused others still can be loaded and told") {
    Loading loading;
    CHECK(loading.load(first) == "");
    CHECK(loading.load(fails_at_once) != "");
    CHECK(loading.load(second) == "");
    loading.loader.finish();
    CHECK(loading.capture.take_log()
          == "info: first: init(null)\ninfo: second: init(null)\ninfo: second: fini\ninfo: first: fini");
}

#if defined(KEL_FIXTURE_PLUGIN_FOLDER)

namespace {

std::string fixture(const char *name) { return std::string(KEL_FIXTURE_PLUGIN_FOLDER) + "/" + name + ".so"; }

Options with_plugin(const char *name, std::string args = {}) {
    Options options;
    options.plugins = {
        {.path = fixture(name), .args = std::move(args)}
    };
    return options;
}

} // namespace

TEST_CASE("a shared object is loaded, started, told and unloaded, its code there until the Lua state is closed") {
    ScriptedApplication app(with_plugin("good", "x=1"));
    CHECK(app.result == StartResult::started);
    CHECK(app.take_log() == "info: good: init(x=1)\ninfo: good: kel.internalinit, Lua state there");
    CHECK(app.value("greet()") == "hello");
    app.runtime.stop();
    CHECK(app.take_log() == "info: good: fini\ninfo: good: collected");
}

TEST_CASE("a plug-in without arguments gets null") {
    ScriptedApplication app(with_plugin("good"));
    CHECK(app.take_log().starts_with("info: good: init(no arguments)\n"));
    app.runtime.stop();
    app.take_log();
}

TEST_CASE("listeners of a plug-in are not called when it is gone") {
    ScriptedApplication app(with_plugin("good"));
    app.take_log();
    app.runtime.data.write("mode", kelhost::to_input(kelhost::Value(5.0)));
    CHECK(app.take_log() == "info: good: changed mode");
    app.runtime.stop();
    app.take_log();
    app.runtime.data.write("mode", kelhost::to_input(kelhost::Value(6.0)));
    CHECK(app.take_log() == "");
}

TEST_CASE("one shared object serves two applications at once") {
    ScriptedApplication one(with_plugin("good", "one"));
    {
        ScriptedApplication two(with_plugin("good", "two"));
        CHECK(two.take_log() == "info: good: init(two)\ninfo: good: kel.internalinit, Lua state there");
        CHECK(two.value("greet()") == "hello");
        two.runtime.stop();
        CHECK(two.take_log() == "info: good: fini\ninfo: good: collected");
    }
    CHECK(one.take_log() == "info: good: init(one)\ninfo: good: kel.internalinit, Lua state there");
    CHECK(one.value("greet()") == "hello");
    one.runtime.stop();
    CHECK(one.take_log() == "info: good: fini\ninfo: good: collected");
}

TEST_CASE("a shared object without the entry point is reported") {
    Loading loading;
    const std::string path = fixture("without_entry");
    CHECK(loading.load(nullptr, path)
          == "Cannot load plug-in \"" + path + "\": it has no symbol KEL_PLUGIN_CREATE_FUNC");
}

TEST_CASE("a shared object whose entry point or init fails is reported") {
    Loading loading;
    CHECK(loading.load(nullptr, fixture("failing_entry"))
          == "Cannot load plug-in \"" + fixture("failing_entry") + "\": KEL_PLUGIN_CREATE_FUNC returned 3, expected 0");
    CHECK(loading.load(nullptr, fixture("failing_init"))
          == "Cannot load plug-in \"" + fixture("failing_init") + "\": init returned -5, expected 0");
    loading.loader.finish();
}

TEST_CASE("an application whose plug-in subscribes and then refuses to start calls it no more") {
    ScriptedApplication app(with_plugin("failing_init"));
    CHECK(app.result == StartResult::plugin_failed);
    CHECK(app.runtime.start_failure
          == "Cannot load plug-in \"" + fixture("failing_init") + "\": init returned -5, expected 0");
    app.runtime.io.trigger("kel.internalinit", "");
}

TEST_CASE("a file that is missing or no shared object is reported with the system's reason") {
    TemporaryFolder folder;
    Loading loading;
    const std::string missing = folder.path() + "/missing.so";
    CHECK(loading.load(nullptr, missing)
          == "Cannot load plug-in \"" + missing + "\": " + missing
                 + ": cannot open shared object file: No such file or directory");
    const std::string text = folder.write("text.so", "this is no shared object, whatever its name says");
    const std::string failure = loading.load(nullptr, text);
    CHECK(failure.starts_with("Cannot load plug-in \"" + text + "\": " + text + ": "));
    CHECK(failure.size() > 2 * text.size() + 30);
}

TEST_CASE("a path without a folder is a file's, not a name to be searched for") {
    Loading loading;
    const std::string failure = loading.load(nullptr, "libc.so.6"); // which the system would find
    CHECK(failure.starts_with("Cannot load plug-in \"libc.so.6\": ./libc.so.6: cannot open shared object file"));
}

#endif
