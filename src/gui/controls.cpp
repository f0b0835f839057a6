// Controls and menu items, by number.
#include "gui/client_area.h"
#include "gui/grid_control.h"
#include "gui/list_control.h"
#include "gui/text_control.h"
#include "gui/window.h"

#include <QAbstractButton>
#include <QAction>
#include <QEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QPlainTextEdit>

#include <algorithm>

namespace {

QWidget *find_control(const Window *window, int number) {
    const auto found = window->controls.find(number);
    return found == window->controls.end() ? nullptr : found->second;
}

int command_of(const QAction &action) {
    return action.property("command").toInt();
}

// All items of the number: a command may stand in more than one menu.
template <typename Function>
void for_each_item(const Window *window, int command, Function function) {
    for (QAction *action : window->commands) {
        if (command_of(*action) == command)
            function(action);
    }
}

// Tells the window that a line of text got or lost the keyboard.
class FocusWatcher final : public QObject {
  public:
    FocusWatcher(Window *window, QLineEdit *line, int number) : QObject(line), window_(window), number_(number) {
        line->installEventFilter(this);
    }

    bool eventFilter(QObject *, QEvent *source) override {
        if (source->type() == QEvent::FocusIn || source->type() == QEvent::FocusOut) {
            Event event;
            event.type = EventType::FieldFocus;
            event.number = number_;
            send_event(window_, event);
        }
        return false;
    }

  private:
    Window *const window_;
    const int number_;
};

void send_number(Window *window, EventType type, int number, ControlUse use = ControlUse::Changed) {
    Event event;
    event.type = type;
    event.number = number;
    event.use = use;
    send_event(window, event);
}

void connect_line(Window *window, QLineEdit *line, int number) {
    QObject::connect(line, &QLineEdit::textEdited, window, [=] { send_number(window, EventType::Control, number); });
    if (!window->is_dialog())  // whose default button it presses
        QObject::connect(line, &QLineEdit::returnPressed, window,
                         [=] { send_number(window, EventType::Control, number, ControlUse::Activated); });
    new FocusWatcher(window, line, number);
}

ListControl *find_list(const Window *window, int number) {
    return qobject_cast<ListControl *>(find_control(window, number));
}

void connect_list(Window *window, const ListControl *list, int number) {
    QObject::connect(list, &ListControl::line_selected, window,
                     [=] { send_number(window, EventType::Control, number, ControlUse::Selected); });
    QObject::connect(list, &ListControl::line_activated, window,
                     [=] { send_number(window, EventType::Control, number, ControlUse::Activated); });
}

GridControl *find_grid(const Window *window, int number) {
    return qobject_cast<GridControl *>(find_control(window, number));
}

void connect_grid(Window *window, const GridControl *grid, int number) {
    QObject::connect(grid, &GridControl::cell_selected, window,
                     [=] { send_number(window, EventType::Control, number, ControlUse::Selected); });
    QObject::connect(grid, &GridControl::cell_activated, window,
                     [=] { send_number(window, EventType::Control, number, ControlUse::Activated); });
}

// Menu items without a number work on the window's grid or text.
void connect_edit_item(const Window *window, QAction *item) {
    if (auto *grid = window->frame->findChild<GridControl *>())
        grid->connect_edit_item(item);
    else if (auto *text = dynamic_cast<TextControl *>(window->frame->findChild<QPlainTextEdit *>()))
        text->connect_edit_item(item);
}

}  // namespace

void connect_controls(Window *window) {
    const QList<QWidget *> widgets = window->frame->findChildren<QWidget *>();
    for (QWidget *widget : widgets) {
        const QVariant property = widget->property("number");
        if (!property.isValid())
            continue;
        const int number = property.toInt();
        window->controls.emplace(number, widget);
        if (auto *button = qobject_cast<QAbstractButton *>(widget))
            QObject::connect(button, &QAbstractButton::clicked, window,
                             [=] { send_number(window, EventType::Control, number); });
        else if (auto *line = qobject_cast<QLineEdit *>(widget))
            connect_line(window, line, number);
        else if (auto *lines = qobject_cast<QPlainTextEdit *>(widget))
            QObject::connect(lines, &QPlainTextEdit::modificationChanged, window->frame, &QWidget::setWindowModified);
        else if (const auto *list = qobject_cast<ListControl *>(widget))
            connect_list(window, list, number);
        else if (const auto *grid = qobject_cast<GridControl *>(widget))
            connect_grid(window, grid, number);
    }
}

void connect_commands(Window *window) {
    auto *main_window = qobject_cast<QMainWindow *>(window->frame);
    const QWidget *menu_bar = main_window ? main_window->menuWidget() : nullptr;
    if (!menu_bar)
        return;
    const QList<QAction *> actions = menu_bar->findChildren<QAction *>();
    for (QAction *action : actions) {
        if (action->property("edit").isValid())
            connect_edit_item(window, action);
        if (!action->property("command").isValid())
            continue;
        window->commands.push_back(action);
        QObject::connect(action, &QAction::triggered, window, [window, action](bool checked) {
            // Whether the item is checked is for the program alone to say.
            if (action->isCheckable())
                action->setChecked(!checked);
            send_number(window, EventType::Command, command_of(*action));
        });
    }
}

// --- Controls -----------------------------------------------------------------------------------------------------

bool gui_has_control(const Window *window, int control) {
    return find_control(window, control) != nullptr;
}

std::string gui_text(const Window *window, int control) {
    const QWidget *widget = find_control(window, control);
    if (const auto *label = qobject_cast<const QLabel *>(widget))
        return label->text().toStdString();
    if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
        return button->text().toStdString();
    if (const auto *line = qobject_cast<const QLineEdit *>(widget))
        return line->text().toStdString();
    if (const auto *lines = qobject_cast<const QPlainTextEdit *>(widget))
        return lines->toPlainText().toStdString();
    return {};
}

void gui_set_text(Window *window, int control, const std::string &text) {
    QWidget *widget = find_control(window, control);
    const QString shown = QString::fromStdString(text);
    if (auto *label = qobject_cast<QLabel *>(widget)) {
        // What the program shows is never markup: it may come from a file.
        label->setTextFormat(Qt::PlainText);
        label->setText(shown);
    } else if (auto *button = qobject_cast<QAbstractButton *>(widget)) {
        button->setText(shown);
    } else if (auto *line = qobject_cast<QLineEdit *>(widget)) {
        line->setText(shown);
    } else if (auto *lines = qobject_cast<QPlainTextEdit *>(widget)) {
        lines->setPlainText(shown);
    }
}

void gui_show_control(Window *window, int control, bool shown) {
    if (QWidget *widget = find_control(window, control))
        widget->setVisible(shown);
}

bool gui_control_shown(const Window *window, int control) {
    const QWidget *widget = find_control(window, control);
    return widget && !widget->isHidden();
}

void gui_move_control(Window *window, int control, GuiRect place) {
    QWidget *widget = find_control(window, control);
    if (!widget)
        return;
    QPoint corner(place.left, place.top);
    const QWidget *area = window->client ? window->client->viewport() : nullptr;
    if (area && widget->parentWidget() != area)
        corner = widget->parentWidget()->mapFromGlobal(area->mapToGlobal(corner));
    widget->setGeometry(QRect(corner, QSize(place.width, place.height)));
}

GuiSize gui_wanted_size(const Window *window, int control) {
    QWidget *widget = find_control(window, control);
    if (!widget)
        return {};
    widget->ensurePolished();
    const QSize size = widget->sizeHint();
    return {size.width(), size.height()};
}

void gui_enable_control(Window *window, int control, bool enabled) {
    if (QWidget *widget = find_control(window, control))
        widget->setEnabled(enabled);
}

void gui_focus_control(Window *window, int control) {
    if (QWidget *widget = find_control(window, control))
        widget->setFocus();
}

void gui_check_control(Window *window, int control, bool checked) {
    if (auto *button = qobject_cast<QAbstractButton *>(find_control(window, control)))
        button->setChecked(checked);
}

bool gui_control_checked(const Window *window, int control) {
    const auto *button = qobject_cast<const QAbstractButton *>(find_control(window, control));
    return button && button->isChecked();
}

// --- Lists --------------------------------------------------------------------------------------------------------

bool gui_set_list(Window *window, int control, std::vector<std::string> lines) {
    ListControl *list = find_list(window, control);
    if (list)
        list->set_lines(std::move(lines));
    return list != nullptr;
}

std::string gui_list_line(const Window *window, int control, int line) {
    const ListControl *list = find_list(window, control);
    const bool present = list && line >= 0 && static_cast<size_t>(line) < list->lines().size();
    return present ? list->lines()[static_cast<size_t>(line)] : std::string();
}

int gui_selected_line(const Window *window, int control) {
    const ListControl *list = find_list(window, control);
    return list ? list->selected_line() : -1;
}

void gui_select_line(Window *window, int control, int line) {
    if (ListControl *list = find_list(window, control))
        list->select_line(line);
}

// --- Grids --------------------------------------------------------------------------------------------------------

bool gui_set_grid(Window *window, int control, GuiGrid grid) {
    GridControl *shown = find_grid(window, control);
    if (shown)
        shown->set_grid(std::move(grid));
    return shown != nullptr;
}

GuiCell gui_grid_current(const Window *window, int control) {
    const GridControl *grid = find_grid(window, control);
    return grid ? grid->current() : GuiCell();
}

void gui_set_grid_current(Window *window, int control, GuiCell cell) {
    if (GridControl *grid = find_grid(window, control))
        grid->set_current(cell);
}

GuiCells gui_grid_selection(const Window *window, int control) {
    const GridControl *grid = find_grid(window, control);
    return grid ? grid->selection() : GuiCells();
}

void gui_copy_grid(Window *window, int control, bool with_names) {
    if (GridControl *grid = find_grid(window, control))
        grid->copy(with_names);
}

// --- Menu items ---------------------------------------------------------------------------------------------------

std::vector<int> gui_commands(const Window *window) {
    std::vector<int> numbers;
    for (const QAction *action : window->commands) {
        if (std::find(numbers.begin(), numbers.end(), command_of(*action)) == numbers.end())
            numbers.push_back(command_of(*action));
    }
    return numbers;
}

void gui_enable_command(Window *window, int command, bool enabled) {
    for_each_item(window, command, [enabled](QAction *action) { action->setEnabled(enabled); });
}

bool gui_command_enabled(const Window *window, int command) {
    bool enabled = false;
    for_each_item(window, command, [&enabled](const QAction *action) { enabled = action->isEnabled(); });
    return enabled;
}

void gui_check_command(Window *window, int command, bool checked) {
    for_each_item(window, command, [checked](QAction *action) {
        action->setCheckable(true);
        action->setChecked(checked);
    });
}
