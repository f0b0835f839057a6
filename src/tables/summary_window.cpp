// The window with the summaries of a browser's columns.
#include "base/text.h"
#include "tables/column_browser.h"
#include "tables/model/column_summary.h"

namespace {

constexpr int summary_resource = 231;
constexpr size_t most_lines = 20000;

// What the pass reads, apart from the browser: it may go while the box tells how far the pass is.
struct SummaryInput {
    TableFileInfo file;
    TableInfo table;
    bool has_table = false;
    BrowserPosition position;
    std::string heading;
};

SummaryInput input_of(const BrowserState &browser) {
    SummaryInput input;
    input.file = browser.product.file;
    input.position = browser.position;
    const TableInfo *table = browser.position.current_table();
    if (!table)
        return input;
    input.table = *table;
    input.has_table = true;
    input.heading = table->name;
    const ColumnInfo *column = browser.position.current_column();
    if (column)
        input.heading += ", " + column->name + column->repetition;
    if (column && column->items > 1)
        input.heading += util_format(", item %lld", static_cast<long long>(browser.position.item));
    if (const ColumnInfo *bits = browser.position.current_bit_column(); bits && browser.position.show_bit_columns)
        input.heading += ", " + bits->name;
    return input;
}

ColumnSummary summarize(Window *window, const SummaryInput &input) {
    constexpr size_t longest_heading = 100;
    Progress progress(window, "Reading the rows of " + shown_name(input.heading, longest_heading));
    const BrowserPosition &position = input.position;
    const auto at = [](const std::vector<ColumnInfo> &columns, int64_t number) {
        const bool is_there = number >= 1 && number <= static_cast<int64_t>(columns.size());
        return is_there ? &columns[static_cast<size_t>(number - 1)] : nullptr;
    };
    SummaryRequest request;
    request.file = &input.file;
    request.table = input.has_table ? &input.table : nullptr;
    request.column = at(input.table.columns, position.column);
    request.bit_column = request.column ? at(request.column->bit_columns, position.bit_column) : nullptr;
    request.item = position.item;
    request.bit_item = position.bit_item;
    request.of_bit_column = position.show_bit_columns;
    const auto rows = static_cast<double>(input.table.rows);
    request.go_on = [&](int64_t row) { return progress.go_on(static_cast<double>(row) / rows); };
    return ts_summarize_column_1(request);
}

std::vector<std::string> lines_of(const SummaryInput &input, const ColumnSummary &summary) {
    std::vector<std::string> lines = {input.heading};
    const std::string &text = summary.text;
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find('\n', start), text.size());
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    if (summary.outcome == SummaryOutcome::Stopped)
        lines.push_back(util_format("     Stopped: of the first %lld of %lld rows.",
                                    static_cast<long long>(summary.rows_read),
                                    static_cast<long long>(input.table.rows)));
    if (summary.outcome == SummaryOutcome::EndedEarly)
        lines.push_back(util_format("     Of the first %lld of %lld rows: the file holds no more.",
                                    static_cast<long long>(summary.rows_read),
                                    static_cast<long long>(input.table.rows)));
    return lines;
}

// The browser's window of summaries, opened where it is not there. Null when there is none.
Window *summary_window(Window *window) {
    if (Window *there = raise_child(window, summary_command))
        return there;
    const GenericState *from = window_state(window);
    auto state = std::make_unique<GenericState>();
    state->kind = DocumentKind::Listing;
    state->directory = from->directory;
    const std::string title =
        "Lumacart - Column Summary - " + shown_name(from->label_state->file_name, longest_title_name);
    Window *shown = open_document_window(summary_resource, report_window_eh, std::move(state));
    if (!shown || !gui_window_exists(window))
        return nullptr;
    gui_set_title(shown, title);
    enable_known_commands(shown, CommandDispatcher::Label);
    gui_focus_control(shown, summary_text);
    keep_child(window, summary_command, shown);
    return shown;
}

void append_summary(Window *shown, std::vector<std::string> lines) {
    const size_t before = gui_paragraph_count(shown, summary_text);
    if (before == 0 || before > most_lines) {
        gui_set_paragraphs(shown, summary_text, lines);
        return;
    }
    lines.insert(lines.begin(), "");
    gui_append_paragraphs(shown, summary_text, lines);
    gui_set_text_changed(shown, summary_text, false);
    gui_show_paragraph(shown, summary_text, before + 1);
}

}  // namespace

void tbtool_get_summary(Window *window) {
    const BrowserState *browser = browser_state(window);
    if (!browser)
        return;
    const SummaryInput input = input_of(*browser);
    const ColumnSummary summary = summarize(window, input);
    if (!gui_window_exists(window))
        return;
    if (summary.outcome != SummaryOutcome::NoSummary) {
        if (Window *shown = summary_window(window))
            append_summary(shown, lines_of(input, summary));
    }
    if (summary.note.empty() || session().unattended)
        return;
    if (summary.outcome == SummaryOutcome::NoSummary)
        gui_note(summary.note);
    else
        gui_error(summary.note);
}
