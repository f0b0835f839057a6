// The About dialog.
#include "decoders/jpeg2000.h"
#include "decoders/jpeg_grey.h"
#include "gui/gui.h"
#include "viewer/session.h"

namespace {

constexpr int about_resource = 104;
constexpr int about_button = 1;
constexpr int about_version = 2;
constexpr int about_libraries = 3;

std::string library_text() {
    return gui_toolkit_version() + " (LGPL version 3)\n" + jpeg_library_version() + " (IJG, BSD and zlib licences)\n" +
           jpeg2000_library_version() +
           " (BSD licence)\n\n"
           "This software is based in part on the work of the Independent JPEG Group.";
}

long about_eh(Window *dialog, const Event &event) {
    if (event.type == EventType::Create) {
        gui_set_text(dialog, about_version, "Version " LUMACART_VERSION);
        gui_set_text(dialog, about_libraries, library_text());
    }
    if (event.type == EventType::Control && event.number == about_button)
        gui_end_dialog(dialog, about_button);
    return 0;
}

}  // namespace

void show_about(Window *owner) {
    gui_run_dialog(about_resource, owner, about_eh, nullptr);
}
