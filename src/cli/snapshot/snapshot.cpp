// snapshot.cpp: `kel snapshot`: starts an application, sends it events, and draws what a screen shows then.
#include "../commands.h"
#include "../display_list.h"
#include "../events.h"
#include "../output.h"
#include "../session.h"
#include "picture.h"
#include "whole_file.h"

namespace kelhost {

namespace {

bool ends_in(const std::string &file, std::string_view extension) { return file.ends_with(extension); }

std::optional<std::string> file_content(const Application &app, const SnapshotArguments &arguments,
                                        std::string &fault) {
    const std::optional<DisplayList> list = make_display_list(app, arguments.screen, fault);
    if (!list) return std::nullopt;
    if (ends_in(arguments.file, ".txt")) return to_text(*list);
    const PictureFormat format = ends_in(arguments.file, ".svg") ? PictureFormat::svg : PictureFormat::png;
    return draw_picture(*list, format, {arguments.scale, arguments.outline}, fault);
}

ExitStatus write_snapshot(const Application &app, const SnapshotArguments &arguments) {
    std::string fault;
    const std::optional<std::string> content = file_content(app, arguments, fault);
    if (content) {
        fault = write_whole_file(arguments.file, *content);
        if (fault.empty()) return succeeded;
        fault = arguments.file + " cannot be written: " + fault;
    }
    report_error(fault);
    return bad_input;
}

} // namespace

ExitStatus snapshot(const SnapshotArguments &arguments) {
    Session session(arguments.session);
    if (!session.load() || !session.start()) return bad_input;
    for (const std::string &event : arguments.events)
        if (!send_event(session.app(), event)) return bad_input;
    const ExitStatus status = write_snapshot(session.app(), arguments);
    session.stop();
    return status == succeeded ? session.verdict(false) : status;
}

} // namespace kelhost
