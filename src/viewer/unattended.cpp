#include "viewer/unattended.h"

#include "base/text.h"
#include "viewer/session.h"

#include <algorithm>
#include <cstdio>

namespace {

struct Log {
    std::string file;
    int lines = 0;
};
Log g_log;

class UnattendedResponder final : public Responder {
  public:
    void message(NoticeKind, const std::string &text) override { log_unattended(text); }

    int question(const std::string &text, const std::vector<std::string> &buttons) override {
        const auto declines = [](const std::string &button) { return button == "Cancel" || button == "No"; };
        const auto refusal = std::find_if(buttons.begin(), buttons.end(), declines);
        const bool can_refuse = refusal != buttons.end();
        log_unattended(text + " - " + (can_refuse ? *refusal : "not answered"));
        return can_refuse ? static_cast<int>(refusal - buttons.begin()) : -1;
    }

    FileAnswer open_file(const FileRequest &request, FileSpec *) override { return refuse(request.prompt); }
    FileAnswer save_file(const FileRequest &request, FileSpec *) override { return refuse(request.prompt); }
    FileAnswer choose_directory(const std::string &prompt, std::string *) override { return refuse(prompt); }

  private:
    static FileAnswer refuse(const std::string &prompt) {
        log_unattended(prompt + " - Cancel");
        return FileAnswer::Cancel;
    }
};

}  // namespace

void set_unattended(bool unattended) {
    static UnattendedResponder responder;
    static Responder *ordinary = nullptr;
    if (unattended == session().unattended)
        return;
    session().unattended = unattended;
    if (unattended)
        ordinary = gui_set_responder(&responder);
    else
        gui_set_responder(ordinary);
    g_log = {};
}

void log_about(const std::string &file) {
    g_log = {file, 0};
}

int logged_lines() {
    return g_log.lines;
}

// Names and texts come from files: on one line, without a byte that a terminal would obey.
void log_unattended(const std::string &text) {
    ++g_log.lines;
    const std::string line = g_log.file.empty() ? text : g_log.file + ": " + text;
    fprintf(stderr, "lumacart: %s\n", util_compress_char(util_clean_up_string(line), ' ').c_str());
}

void tell_note(const std::string &text) {
    if (session().unattended)
        log_unattended(text);
    else
        gui_note(text);
}

void tell_error(const std::string &text) {
    if (session().unattended)
        log_unattended(text);
    else
        gui_error(text);
}
