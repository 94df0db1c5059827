// snapshot.cpp: `kel snapshot`: starts an application, sends it events, and draws what a screen shows then.
#include "../commands.h"
#include "../display_list.h"
#include "../events.h"
#include "../output.h"
#include "../session.h"
#include "../snapshot_file.h"
#include "../whole_file.h"
#include "picture.h"

namespace kelhost {

namespace {

std::optional<std::string> file_content(const Application &app, const SnapshotArguments &arguments,
                                        std::string &fault) {
    const std::optional<DisplayList> list = make_display_list(app, arguments.screen, fault);
    if (!list) return std::nullopt;
    if (arguments.file.ends_with(".txt")) return to_text(*list);
    const PictureFormat format = arguments.file.ends_with(".svg") ? PictureFormat::svg : PictureFormat::png;
    return draw_picture(*list, format, {arguments.scale, arguments.outline}, fault);
}

} // namespace

std::string write_snapshot(const Application &app, const SnapshotArguments &arguments) {
    std::string fault;
    const std::optional<std::string> content = file_content(app, arguments, fault);
    if (!content) return fault;
    const std::string reason = write_whole_file(arguments.file, *content);
    return reason.empty() ? reason : arguments.file + " cannot be written: " + reason;
}

ExitStatus snapshot(const SnapshotArguments &arguments) {
    Session session(arguments.session);
    if (!session.load() || !session.start()) return bad_input;
    for (const std::string &event : arguments.events)
        if (!send_event(session.app(), event)) return bad_input;
    const std::string fault = write_snapshot(session.app(), arguments);
    session.stop();
    if (fault.empty()) return session.verdict(false);
    report_error(fault);
    return bad_input;
}

} // namespace kelhost
