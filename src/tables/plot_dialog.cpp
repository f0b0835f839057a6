// The dialog in which the user picks the columns and rows of a plot.
#include "base/text.h"
#include "tables/model/flatten.h"
#include "tables/page_state.h"
#include "tables/plot_state.h"

#include <algorithm>
#include <array>

namespace {

constexpr int plot_dialog_resource = 143;
constexpr int column_list = 1;
constexpr int close_button = 2;
constexpr int plot_button = 3;
constexpr int x_axis_label = 4;
constexpr int y_axis_label = 5;
constexpr int first_row_field = 6;
constexpr int last_row_field = 7;
constexpr int detailed_button = 8;

struct PlotSetUp {
    std::shared_ptr<PlotSource> source;
    PlotChoice choice;
    char next_axis = 'x';
    bool belongs_to_dialog = false;  // else whoever makes the dialog still holds it
};

PlotSetUp *set_up_of(const Window *dialog) {
    return static_cast<PlotSetUp *>(gui_window_data(dialog));
}

bool has_controls(const Window *dialog, std::initializer_list<int> numbers, const char *message) {
    for (const int number : numbers) {
        if (!gui_has_control(dialog, number)) {
            table_error(message);
            return false;
        }
    }
    return true;
}

// The selected line becomes the next axis.
void plot_axis_selection(Window *dialog) {
    constexpr size_t longest_shown = 30;
    PlotSetUp &plot = *set_up_of(dialog);
    const int line = gui_selected_line(dialog, column_list);
    if (line < 0 || !has_controls(dialog, {x_axis_label, y_axis_label}, "Open Table - couldn't find control window"))
        return;
    const std::string name = plot_column_name(*plot.source->columns[static_cast<size_t>(line)]);
    if (plot.next_axis == 'x') {
        plot.choice.x = line;
        gui_set_text(dialog, x_axis_label, "X-Axis is: " + shown_name(name, longest_shown));
        plot.next_axis = 'y';
    } else {
        plot.choice.y = line;
        gui_set_text(dialog, y_axis_label, "Y-Axis is: " + name);
        plot.next_axis = 'x';
    }
}

// Takes the rows over into the plot when all is well; else false after a note.
bool validate_plot_selections(PlotSetUp *plot, const Window *dialog) {
    if (!has_controls(dialog, {first_row_field, last_row_field}, "Validate Selections - couldn't find control window"))
        return false;
    PlotChoice choice = plot->choice;
    choice.first_row = plot_row_number(gui_text(dialog, first_row_field));
    choice.last_row = plot_row_number(gui_text(dialog, last_row_field));
    const std::string note = plot_choice_note(choice, plot->source->table.rows);
    if (!note.empty()) {
        gui_note(note);
        return false;
    }
    plot->choice = choice;
    return true;
}

// Containers and arrays that cannot be laid out as columns are told before anything is read.
bool can_be_flattened(const PlotSource &source) {
    FlatTable flat;
    flat.table = const_cast<ObjDesc *>(source.table.object);
    if (ctr_to_cols(&flat) != 0) {
        table_error("Couldn't process containers.");
        return false;
    }
    if (array_to_column(&flat) != 0) {
        table_error("Couldn't process arrays");
        return false;
    }
    return true;
}

struct PlotColumns {
    PlotAxis x;
    PlotAxis y;
    PlotRefusal x_refusal;
    PlotRefusal y_refusal;
    bool is_read = false;
};

// Reads and scales one column, or learns why it cannot be; false when its first field is not there.
bool scale_data(TableReader *reader, const ColumnInfo &column, const PlotChoice &choice, PlotAxis *axis,
                PlotRefusal *refusal) {
    FieldBytes first;
    if (!reader->read(choice.first_row - 1, column, 1, &first))
        return false;
    axis->name = plot_column_name(column);
    *refusal = plot_refusal(column, first.bytes);
    if (!refusal->refused)
        plot_read_column(reader, column, choice.first_row, choice.last_row, &axis->values);
    return true;
}

PlotColumns read_the_data(const PlotSource &source, const PlotChoice &choice) {
    const BusyCursor busy;
    PlotColumns read;
    const auto reader = tb_open_reader(source.tables.file, source.table);
    if (!reader)
        return read;
    const ColumnInfo &x = *source.columns[static_cast<size_t>(choice.x)];
    const ColumnInfo &y = *source.columns[static_cast<size_t>(choice.y)];
    read.is_read = with_memory([&] {
                       read.is_read = scale_data(reader.get(), x, choice, &read.x, &read.x_refusal) &&
                                      scale_data(reader.get(), y, choice, &read.y, &read.y_refusal);
                   }) &&
                   read.is_read;
    // A row that the file holds in part has the one field but not the other.
    const size_t rows = std::min(read.x.values.size(), read.y.values.size());
    read.x.values.resize(rows);
    read.y.values.resize(rows);
    scale_axis(&read.x);
    scale_axis(&read.y);
    return read;
}

void tell_refusal(const PlotRefusal &refusal, const char *axis_note) {
    if (!refusal.refused)
        return;
    if (!refusal.note.empty())
        gui_note(refusal.note);
    gui_note(axis_note);
}

void plot_the_table(Window *dialog) {
    PlotSetUp *plot = set_up_of(dialog);
    if (!validate_plot_selections(plot, dialog) || !gui_window_exists(dialog) || !can_be_flattened(*plot->source))
        return;
    const std::shared_ptr<PlotSource> source = plot->source;
    const PlotChoice choice = plot->choice;
    PlotColumns read = read_the_data(*source, choice);
    if (!read.is_read)
        return table_error("OaReadObject failed!\n");
    tell_refusal(read.x_refusal, "X axis data format not valid for plotting");
    tell_refusal(read.y_refusal, "Y axis data format not valid for plotting");
    if (read.x_refusal.refused || read.y_refusal.refused)
        return;
    const auto rows = static_cast<long long>(read.x.values.size());
    const long long rows_chosen = choice.last_row - choice.first_row + 1;
    open_plot_window(source, choice, std::move(read.x), std::move(read.y));
    if (rows < rows_chosen)
        table_warning(util_format("The data file holds %lld of the %lld rows chosen.  The others are not plotted.",
                                  rows, rows_chosen));
}

void plot_in_detail(Window *dialog) {
    PlotSetUp *plot = set_up_of(dialog);
    if (!validate_plot_selections(plot, dialog) || !gui_window_exists(dialog))
        return;
    const std::shared_ptr<PlotSource> source = plot->source;  // outlives the dialog
    open_detailed_plot(*source, plot->choice);
}

bool fill_list(Window *dialog, const PlotSource &source) {
    std::vector<std::string> names;
    const bool done = with_memory([&] {
        for (const ColumnInfo *column : source.columns)
            names.push_back(plot_column_name(*column));
    });
    if (!done) {
        table_error("Table Plot - unable to add new add element");
        return false;
    }
    if (gui_set_list(dialog, column_list, std::move(names)))
        return true;
    table_error("Object plot set up - list add failed");
    return false;
}

long create_dialog(Window *dialog) {
    constexpr size_t longest_title_part = 60;
    const PlotSetUp &plot = *set_up_of(dialog);
    const PlotSource &source = *plot.source;
    if (!has_controls(dialog, {column_list}, "Plot Object - missing list box") ||
        !has_controls(dialog, {first_row_field, last_row_field}, "Open Table - couldn't find control window"))
        return 1;
    gui_set_title(dialog, "Plot - " + shown_name(source.product->label_state->file_name, longest_title_part) + " - " +
                              shown_name(source.table.name, longest_title_part));
    gui_set_text(dialog, first_row_field, "1");
    gui_set_text(dialog, last_row_field, std::to_string(source.table.rows));
    if (!fill_list(dialog, source))
        return 1;
    gui_focus_control(dialog, column_list);
    return 0;
}

long plot_dialog_eh(Window *dialog, const Event &event) {
    switch (event.type) {
        case EventType::Create:
            return create_dialog(dialog);
        case EventType::Destroy:
            if (set_up_of(dialog)->belongs_to_dialog)
                delete set_up_of(dialog);
            break;
        case EventType::Control:
            if (event.number == column_list && event.use == ControlUse::Selected)
                plot_axis_selection(dialog);
            else if (event.number == close_button)
                gui_destroy_window(dialog);
            else if (event.number == plot_button)
                plot_the_table(dialog);
            else if (event.number == detailed_button)
                plot_in_detail(dialog);
            break;
        default:
            break;
    }
    return 0;
}

// The table's records; null after a message.
std::shared_ptr<PlotSource> make_source(std::unique_ptr<GenericState> state) {
    if (!state || !state->label_state || !state->label_state->root) {
        table_error("Open Object - no valid object");
        return nullptr;
    }
    const LabelState &label = *state->label_state;
    auto source = std::make_shared<PlotSource>();
    source->tables = tb_read_product(label.root.get());
    const ObjDesc *object = find_shown_table(label, source->tables);
    if (!object) {
        table_error("Open Object - no valid object");
        return nullptr;
    }
    source->table = tb_table_of(source->tables, object);
    source->table.rows = std::clamp<int64_t>(read_table_rows(object, label.root.get()), 0, tb_most_rows);
    source->columns = plot_columns(source->table);
    state->label_state->current_object = const_cast<ObjDesc *>(object);
    source->product = std::move(state);
    return source;
}

}  // namespace

void plot_set_up(std::unique_ptr<GenericState> state) {
    auto plot = new_or_null<PlotSetUp>();
    if (!plot)
        return fatal_out_of_memory("Table Plot - insufficient memory");
    plot->source = make_source(std::move(state));
    if (!plot->source)
        return;
    if (gui_create_window(plot_dialog_resource, nullptr, plot_dialog_eh, plot.get()))
        plot.release()->belongs_to_dialog = true;
    else
        table_error("Could not open plot set up dialog");
}

void plot_table_columns(Window *window) {
    const TableState *table = table_state(window);
    if (!table)
        return;
    restore_profile();
    auto state = std::make_unique<GenericState>();
    if (!reopen_label(*window_state(window), state.get()))
        return;
    state->label_state->object_chosen = true;
    plot_set_up(std::move(state));
}
