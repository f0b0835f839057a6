#include "viewer/time_dialog.h"

#include "viewer/model/time_value.h"
#include "viewer/state.h"

#include <array>

namespace {

constexpr int time_dialog_resource = 211;
constexpr int close_button = 2;
constexpr int time_field = 11;
constexpr int fault_text = 20;
constexpr const char *hint = "A date or time as labels write it: 1996-12-31, 1996-366, 1996-12-31T23:59:59.5Z";

struct ResultText {
    int control;
    std::string (*of)(const TimeValue &time);
};
constexpr std::array results = {
    ResultText{21, calendar_date_text},
    ResultText{22, day_of_year_text},
    ResultText{23, time_of_day_text},
    ResultText{24, julian_date_text},
};
constexpr const char *no_result = "–";

void show_time(Window *dialog) {
    TimeValue time;
    const std::string text = gui_text(dialog, time_field);
    const std::string fault = parse_time(text, &time);
    const bool is_blank = text.find_first_not_of(' ') == std::string::npos;
    gui_set_text(dialog, fault_text, is_blank || fault.empty() ? hint : fault);
    for (const ResultText &result : results) {
        const bool known = fault.empty() && (result.of != time_of_day_text || time.has_time);
        gui_set_text(dialog, result.control, known ? result.of(time) : no_result);
    }
}

// When the image of the window was taken, as its label says.
std::string start_time(const GenericState *state) {
    ObjDesc *label = state && state->label_state ? state->label_state->root.get() : nullptr;
    const Kwd *keyword = label ? OdlFindKwd(label, "START_TIME", nullptr, 1, SCOPE_TO_END) : nullptr;
    const char *value = keyword ? OdlGetKwdValue(keyword) : nullptr;
    TimeValue time;
    return value && parse_time(value, &time).empty() ? value : "";
}

long time_dialog_eh(Window *dialog, const Event &event) {
    if (event.type == EventType::Create) {
        gui_set_text(dialog, time_field, *static_cast<std::string *>(gui_window_data(dialog)));
        show_time(dialog);
    }
    if (event.type == EventType::Control && event.number == time_field)
        show_time(dialog);
    if (event.type == EventType::Control && event.number == close_button)
        gui_end_dialog(dialog, close_button);
    return 0;
}

}  // namespace

void parse_time_dialog(Window *owner) {
    std::string text = start_time(window_state(owner));
    if (gui_run_dialog(time_dialog_resource, owner, time_dialog_eh, &text) < 0)
        gui_error("Can't open dialog");
}
