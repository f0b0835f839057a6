#include "support/window_driver.h"

#include "gui/client_area.h"
#include "gui/window.h"

#include <QAbstractButton>
#include <QAbstractItemModelTester>
#include <QAbstractScrollArea>
#include <QAccessible>
#include <QAccessibleTableInterface>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDropEvent>
#include <QFileDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QMimeData>
#include <QPixmap>
#include <QScreen>
#include <QScrollBar>
#include <QTableView>
#include <QTest>
#include <QTimer>
#include <QUrl>
#include <QWheelEvent>
#include <QWindow>
#include <gtest/gtest.h>

#include <map>

namespace {

QWidget *drawing_area(const Window *window) {
    return window->client ? window->client->viewport() : window->frame;
}

QPoint whole(GuiPoint position) {
    return QPointF(position.x, position.y).toPoint();
}

Qt::KeyboardModifiers modifiers_of(unsigned modifiers) {
    return (modifiers & GUI_SHIFT ? Qt::ShiftModifier : Qt::NoModifier) |
           (modifiers & GUI_CONTROL ? Qt::ControlModifier : Qt::NoModifier) |
           (modifiers & GUI_ALT ? Qt::AltModifier : Qt::NoModifier);
}

Qt::MouseButton button_of(int button) {
    return button == 1 ? Qt::LeftButton : button == 2 ? Qt::MiddleButton : Qt::RightButton;
}

Qt::Key key_of(GuiKey key) {
    static const std::map<GuiKey, Qt::Key> keys = {
        {GuiKey::Left, Qt::Key_Left},     {GuiKey::Right, Qt::Key_Right},   {GuiKey::Up, Qt::Key_Up},
        {GuiKey::Down, Qt::Key_Down},     {GuiKey::PageUp, Qt::Key_PageUp}, {GuiKey::PageDown, Qt::Key_PageDown},
        {GuiKey::Home, Qt::Key_Home},     {GuiKey::End, Qt::Key_End},       {GuiKey::Enter, Qt::Key_Return},
        {GuiKey::Escape, Qt::Key_Escape}, {GuiKey::Delete, Qt::Key_Delete}, {GuiKey::Tab, Qt::Key_Tab},
    };
    return keys.at(key);
}

// As the application delivers keys: to what has the focus in the window.
QWidget *key_receiver(Window *window) {
    QWidget *focused = window->frame->focusWidget();
    return focused ? focused : window->frame;
}

QAction *find_action(const Window *window, int command) {
    for (QAction *action : window->commands) {
        if (action->property("command").toInt() == command)
            return action;
    }
    return nullptr;
}

std::vector<unsigned> pixels_of(const QPixmap &picture) {
    const QImage image = picture.toImage();
    std::vector<unsigned> pixels;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            pixels.push_back(image.pixel(x, y) & 0xffffff);
    }
    return pixels;
}

// Whether the widget took the files.
bool drop_on(QWidget *receiver, const std::vector<std::string> &files) {
    QMimeData data;
    QList<QUrl> urls;
    for (const std::string &file : files)
        urls.append(QUrl::fromEncoded("file://" + QByteArray::fromStdString(file).toPercentEncoding("/")));
    data.setUrls(urls);
    const QPoint place(1, 1);
    QDragEnterEvent enter(place, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(receiver, &enter);
    if (!enter.isAccepted())
        return false;
    QDropEvent drop(place, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(receiver, &drop);
    EXPECT_EQ(drop.dropAction(), Qt::CopyAction);
    settle();
    return true;
}

template <typename Box>
Box *shown_box() {
    return qobject_cast<Box *>(QApplication::activeModalWidget());
}

}  // namespace

int run_gui_test(int task_resource, EventHandler task_handler, std::function<void()> body) {
    static std::function<void()> running_body;
    static EventHandler handler;
    running_body = std::move(body);
    handler = task_handler;
    const auto start = [](Window *window, const Event &event) -> long {
        if (event.type == EventType::Create) {
            QTimer::singleShot(0, qApp, [] {
                running_body();
                gui_quit();
            });
        }
        return handler ? handler(window, event) : 0;
    };
    return gui_run("Window test", task_resource, start);
}

void run_window_test(int resource, EventHandler handler, const std::function<void(Window *)> &body) {
    const auto with_window = [&] {
        Window *window = gui_create_window(resource, nullptr, handler, nullptr);
        ASSERT_TRUE(window);
        body(window);
    };
    EXPECT_EQ(run_gui_test(9001, nullptr, with_window), 0);
}

void settle() {
    for (int round = 0; round < 3; ++round) {
        QApplication::processEvents();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

bool settle_until(const std::function<bool()> &condition) {
    return QTest::qWaitFor(condition, 5000);
}

Window *find_window(const std::string &title) {
    for (auto window = all_windows().rbegin(); window != all_windows().rend(); ++window) {
        if ((*window)->title == title)
            return *window;
    }
    return nullptr;
}

std::vector<Window *> find_windows(const std::string &title) {
    std::vector<Window *> found;
    std::copy_if(all_windows().begin(), all_windows().end(), std::back_inserter(found),
                 [&title](const Window *window) { return window->title == title; });
    return found;
}

// --- Input --------------------------------------------------------------------------------------------------------

void mouse_move(Window *window, GuiPoint position) {
    QMouseEvent event(QEvent::MouseMove, QPointF(position.x, position.y),
                      drawing_area(window)->mapToGlobal(QPointF(position.x, position.y)), Qt::NoButton, Qt::NoButton,
                      Qt::NoModifier);
    QApplication::sendEvent(drawing_area(window), &event);
}

void mouse_press(Window *window, GuiPoint position, int button, unsigned modifiers) {
    QTest::mousePress(drawing_area(window), button_of(button), modifiers_of(modifiers), whole(position));
}

void mouse_release(Window *window, GuiPoint position, int button, unsigned modifiers) {
    QTest::mouseRelease(drawing_area(window), button_of(button), modifiers_of(modifiers), whole(position));
}

void mouse_click(Window *window, GuiPoint position, int button, unsigned modifiers) {
    QTest::mouseClick(drawing_area(window), button_of(button), modifiers_of(modifiers), whole(position));
}

void mouse_double_click(Window *window, GuiPoint position) {
    QTest::mouseDClick(drawing_area(window), Qt::LeftButton, Qt::NoModifier, whole(position));
}

void mouse_leave(Window *window) {
    QEvent event(QEvent::Leave);
    QApplication::sendEvent(drawing_area(window), &event);
}

void turn_wheel(Window *window, GuiPoint position, int angle, unsigned modifiers) {
    const QPointF place(position.x, position.y);
    QWheelEvent event(place, drawing_area(window)->mapToGlobal(place), QPoint(), QPoint(0, angle), Qt::NoButton,
                      modifiers_of(modifiers), Qt::NoScrollPhase, false);
    QApplication::sendEvent(drawing_area(window), &event);
}

void press_key(Window *window, GuiKey key, unsigned modifiers) {
    QTest::keyClick(key_receiver(window), key_of(key), modifiers_of(modifiers));
}

void press_character(Window *window, char character, unsigned modifiers) {
    QTest::keyClick(key_receiver(window), character, modifiers_of(modifiers));
}

void drop_files(Window *window, const std::vector<std::string> &files) {
    drop_on(window->frame, files);
}

void drop_files_on_control(Window *window, int control, const std::vector<std::string> &files) {
    // As the platform delivers a drop: to the innermost widget that takes it.
    auto *area = qobject_cast<QAbstractScrollArea *>(window->controls.at(control));
    ASSERT_NE(area, nullptr);
    if (!drop_on(area->viewport(), files))
        drop_on(window->frame, files);
}
bool choose_command(Window *window, int command) {
    QAction *action = find_action(window, command);
    if (!action || !action->isEnabled())
        return false;
    action->trigger();
    return true;
}

bool choose_item(Window *window, const std::string &text) {
    for (QAction *action : window->frame->findChildren<QAction *>()) {
        if (action->text().remove('&').toStdString() != text || !action->isEnabled())
            continue;
        action->trigger();
        return true;
    }
    return false;
}

bool command_checked(const Window *window, int command) {
    const QAction *action = find_action(window, command);
    return action && action->isChecked();
}

bool use_control(Window *window, int control) {
    const auto found = window->controls.find(control);
    auto *button = found == window->controls.end() ? nullptr : qobject_cast<QAbstractButton *>(found->second);
    if (!button || !button->isEnabled() || button->isHidden())
        return false;
    button->click();
    return true;
}

void type_text(Window *window, int control, const std::string &text) {
    auto *line = qobject_cast<QLineEdit *>(window->controls.at(control));
    line->setFocus();
    line->selectAll();
    QTest::keyClick(line, Qt::Key_Delete);
    QTest::keyClicks(line, QString::fromStdString(text));
}

QPoint place_of_line(QListView *view, int line) {
    const QModelIndex index = view->model()->index(line, 0);
    view->scrollTo(index);
    return view->visualRect(index).center();
}

void click_line(Window *window, int list, int line) {
    auto *view = qobject_cast<QListView *>(window->controls.at(list));
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, place_of_line(view, line));
}

void double_click_line(Window *window, int list, int line) {
    auto *view = qobject_cast<QListView *>(window->controls.at(list));
    const QPoint place = place_of_line(view, line);
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, place);
}

QTableView *grid_view(Window *window, int grid) {
    return qobject_cast<QTableView *>(window->controls.at(grid));
}

QModelIndex grid_index(Window *window, int grid, GuiCell cell) {
    return grid_view(window, grid)->model()->index(static_cast<int>(cell.row), cell.column);
}

QPoint place_of_cell(Window *window, int grid, GuiCell cell) {
    QTableView *view = grid_view(window, grid);
    view->scrollTo(grid_index(window, grid, cell));
    return view->visualRect(grid_index(window, grid, cell)).center();
}

void click_cell(Window *window, int grid, GuiCell cell, unsigned modifiers) {
    const QPoint place = place_of_cell(window, grid, cell);
    QTest::mouseClick(grid_view(window, grid)->viewport(), Qt::LeftButton, modifiers_of(modifiers), place);
}

void double_click_cell(Window *window, int grid, GuiCell cell) {
    click_cell(window, grid, cell);
    QTest::mouseDClick(grid_view(window, grid)->viewport(), Qt::LeftButton, Qt::NoModifier,
                       place_of_cell(window, grid, cell));
}

void click_column_head(Window *window, int grid, int column) {
    const QHeaderView *head = grid_view(window, grid)->horizontalHeader();
    QTest::mouseClick(head->viewport(), Qt::LeftButton, Qt::NoModifier,
                      {head->sectionViewportPosition(column) + head->sectionSize(column) / 2, 5});
}

void click_row_head(Window *window, int grid, int row) {
    const QHeaderView *head = grid_view(window, grid)->verticalHeader();
    QTest::mouseClick(head->viewport(), Qt::LeftButton, Qt::NoModifier,
                      {5, head->sectionViewportPosition(row) + head->sectionSize(row) / 2});
}

std::string cell_on_screen(Window *window, int grid, GuiCell cell) {
    return grid_index(window, grid, cell).data().toString().toStdString();
}

std::string column_head(Window *window, int grid, int column) {
    return grid_view(window, grid)->model()->headerData(column, Qt::Horizontal).toString().toStdString();
}

std::string row_head(Window *window, int grid, int row) {
    return grid_view(window, grid)->model()->headerData(row, Qt::Vertical).toString().toStdString();
}

GuiCell grid_size(Window *window, int grid) {
    return {grid_view(window, grid)->model()->rowCount(), grid_view(window, grid)->model()->columnCount()};
}

bool cell_is_at_the_right(Window *window, int grid, GuiCell cell) {
    return grid_index(window, grid, cell).data(Qt::TextAlignmentRole).toInt() & Qt::AlignRight;
}

int row_heads_width(Window *window, int grid) {
    settle();
    return grid_view(window, grid)->verticalHeader()->width();
}

int column_width(Window *window, int grid, int column) {
    return grid_view(window, grid)->columnWidth(column);
}

void check_grid_model(Window *window, int grid) {
    QAbstractItemModel *model = grid_view(window, grid)->model();
    new QAbstractItemModelTester(model, QAbstractItemModelTester::FailureReportingMode::Fatal, model);
}

std::string clipboard_text() {
    return QGuiApplication::clipboard()->text().toStdString();
}

std::string accessible_cell(Window *window, int grid, GuiCell cell) {
    QAccessibleInterface *table = QAccessible::queryAccessibleInterface(grid_view(window, grid));
    QAccessibleInterface *found = table->tableInterface()->cellAt(static_cast<int>(cell.row), cell.column);
    return found ? found->text(QAccessible::Name).toStdString() : std::string();
}

std::vector<int> marked_columns(Window *window, int list, int line) {
    settle();
    auto *view = qobject_cast<QListView *>(window->controls.at(list));
    const QModelIndex index = view->model()->index(line, 0);
    view->scrollTo(index);
    view->setCurrentIndex({});
    const QImage image = view->viewport()->grab(view->visualRect(index)).toImage();
    std::vector<int> columns;
    for (int x = 0; x < image.width(); ++x) {
        for (int y = 0; y < image.height(); ++y) {
            if (image.pixel(x, y) != image.pixel(0, y)) {
                columns.push_back(x);
                break;
            }
        }
    }
    return columns;
}

void close_window(Window *window) {
    window->frame->close();
}

void resize_window(Window *window, int width, int height) {
    window->frame->resize(width, height);
    settle();
}

bool window_shown(const Window *window) {
    return window->frame->isVisible();
}

std::string title_on_screen(const Window *window) {
    return window->frame->windowHandle()->title().toStdString();
}

void ask_to_quit() {
    QCoreApplication::quit();
}

// --- Output -------------------------------------------------------------------------------------------------------

std::vector<unsigned> shown_pixels(Window *window, GuiRect area) {
    settle();
    return pixels_of(drawing_area(window)->grab(QRect(area.left, area.top, area.width, area.height)));
}

std::vector<unsigned> screenshot(Window *window) {
    settle();
    return pixels_of(window->frame->screen()->grabWindow(window->frame->winId()));
}

void repaint_part(Window *window, GuiRect area) {
    drawing_area(window)->repaint(area.left, area.top, area.width, area.height);
}

unsigned shown_pixel(Window *window, int x, int y) {
    return shown_pixels(window, {x, y, 1, 1}).at(0);
}

unsigned document_background(const Window *window) {
    return drawing_area(window)->palette().color(QPalette::Base).rgb() & 0xffffff;
}

bool has_scroll_bars(const Window *window) {
    return window->client->horizontalScrollBar()->isVisible() || window->client->verticalScrollBar()->isVisible();
}

GuiRect place_on_screen(const Window *window) {
    const QRect place = window->frame->frameGeometry();
    return {place.x(), place.y(), place.width(), place.height()};
}

bool pointer_is_busy() {
    return QGuiApplication::overrideCursor() != nullptr;
}

// --- Boxes --------------------------------------------------------------------------------------------------------

void when_idle(std::function<void()> action) {
    QTimer::singleShot(0, qApp, std::move(action));
}

std::string shown_box_text() {
    const auto *box = shown_box<QMessageBox>();
    return box ? box->text().toStdString() : std::string();
}

bool press_box_button(const std::string &text) {
    const auto *box = shown_box<QMessageBox>();
    for (QAbstractButton *button : box ? box->buttons() : QList<QAbstractButton *>()) {
        if (button->text().remove('&').toStdString() == text) {
            button->click();
            return true;
        }
    }
    return false;
}

bool box_is_shown() {
    return QApplication::activeModalWidget() != nullptr;
}

bool close_box() {
    QWidget *box = QApplication::activeModalWidget();
    if (box)
        QTest::keyClick(box, Qt::Key_Escape);
    return box != nullptr;
}

bool answer_file_dialog(const std::string &name) {
    auto *dialog = shown_box<QFileDialog>();
    auto *line = dialog ? dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit")) : nullptr;
    if (!line)
        return false;
    line->setText(QString::fromStdString(name));
    QTest::keyClick(line, Qt::Key_Return);
    return true;
}

// --- Responder ----------------------------------------------------------------------------------------------------

template <typename T>
bool ScriptedResponder::take(std::vector<T> *from, T *answer) {
    if (from->empty())
        return false;
    *answer = from->front();
    from->erase(from->begin());
    return true;
}

void ScriptedResponder::message(NoticeKind kind, const std::string &text) {
    const char *name = kind == NoticeKind::Note ? "note: " : kind == NoticeKind::Warning ? "warning: " : "error: ";
    shown.push_back(name + text);
}

int ScriptedResponder::question(const std::string &text, const std::vector<std::string> &buttons) {
    std::string names;
    for (const std::string &button : buttons)
        names += (names.empty() ? "" : "|") + button;
    shown.push_back("question: " + text + " [" + names + "]");
    int answer = -1;
    take(&answers, &answer);
    return answer;
}

FileAnswer ScriptedResponder::next_file(const char *what, const FileRequest &request, FileSpec *chosen) {
    shown.push_back(what + request.prompt);
    requests.push_back(request);
    if (!take(&files, chosen))
        return FileAnswer::Cancel;
    return chosen->name.empty() ? FileAnswer::Bad : FileAnswer::Ok;
}

FileAnswer ScriptedResponder::open_file(const FileRequest &request, FileSpec *chosen) {
    return next_file("open: ", request, chosen);
}

FileAnswer ScriptedResponder::save_file(const FileRequest &request, FileSpec *chosen) {
    return next_file("save: ", request, chosen);
}

bool ScriptedResponder::choose_colour(const std::string &prompt, Colour *colour) {
    shown.push_back("colour: " + prompt);
    return take(&colours, colour);
}

FileAnswer ScriptedResponder::choose_directory(const std::string &prompt, std::string *chosen) {
    shown.push_back("directory: " + prompt);
    return take(&directories, chosen) ? FileAnswer::Ok : FileAnswer::Cancel;
}
