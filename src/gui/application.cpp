#include "gui/application.h"

#include "gui/arguments.h"
#include "gui/help.h"
#include "gui/window.h"

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QSessionManager>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace {

// The argument that the platform adds behind the user's own.
char platform_argument[] = "-toolkit=qt6";
char unnamed_program[] = "program";

struct State {
    Arguments arguments;
    Window *task = nullptr;
    bool quitting = false;
    ToolkitErrorHandler error_handler = nullptr;
    bool error_shown = false;
    int busy = 0;  // BusyCursors that count
};
State g_state;

bool may_quit() {
    Event event;
    event.type = EventType::Quit;
    event.query = true;
    return send_event(g_state.task, event) == 0;
}

class Application final : public QApplication {
  public:
    Application(int &argc, char **argv) : QApplication(argc, argv) {
        setQuitOnLastWindowClosed(false);
        connect(this, &QGuiApplication::commitDataRequest, this, [](QSessionManager &session) {
            if (!may_quit())
                session.cancel();
        });
    }

    bool notify(QObject *receiver, QEvent *source) override {
        return take_help_key(receiver, *source) || QApplication::notify(receiver, source);
    }

    bool event(QEvent *source) override {
        if (source->type() != QEvent::Quit || !g_state.task)
            return QApplication::event(source);
        source->setAccepted(may_quit());
        if (source->isAccepted()) {
            Event event;
            event.type = EventType::Quit;
            send_event(g_state.task, event);
        }
        return true;
    }
};

// --- Display ------------------------------------------------------------------------------------------------------

std::string_view environment(const char *variable) {
    const char *value = getenv(variable);
    return value ? value : "";
}

// Qt ends the process with a core dump where there is none.
bool has_display(const Arguments &arguments) {
    std::string_view platform = arguments.toolkit_value("platform");
    if (platform.empty())
        platform = environment("QT_QPA_PLATFORM");
    if (!platform.empty() && !platform.starts_with("xcb") && !platform.starts_with("wayland"))
        return true;
    return !environment("DISPLAY").empty() || !environment("WAYLAND_DISPLAY").empty() ||
           !environment("WAYLAND_SOCKET").empty() || !arguments.toolkit_value("display").empty();
}

// While the application is made: a display that does not answer ends the process, but with a message and status 1.
void report_start_message(QtMsgType type, const QMessageLogContext &, const QString &text) {
    if (type != QtFatalMsg)
        return;
    fprintf(stderr, "%s\n", qPrintable(text));
    fflush(nullptr);
    std::_Exit(1);
}

}  // namespace

// --- Running ------------------------------------------------------------------------------------------------------

int gui_main(int argc, char **argv, int (*program)(int argc, char **argv)) {
    g_state.arguments = split_arguments(argc, argv);
    std::vector<char *> arguments = g_state.arguments.program;
    arguments.insert(arguments.end() - 1, platform_argument);
    return program(static_cast<int>(arguments.size()) - 1, arguments.data());
}

int gui_run(const char *application_name, int resource, EventHandler task_handler) {
    if (g_state.arguments.toolkit.empty())
        g_state.arguments.toolkit = {unnamed_program, nullptr};
    if (!has_display(g_state.arguments)) {
        fprintf(stderr, "%s: there is no display: neither DISPLAY nor WAYLAND_DISPLAY is set\n", application_name);
        return 1;
    }
    int argc = g_state.arguments.toolkit_count();
    const QtMessageHandler ordinary = qInstallMessageHandler(report_start_message);
    Application application(argc, g_state.arguments.toolkit.data());
    setlocale(LC_NUMERIC, "C");  // the toolkit took the user's; values are shown as labels write them
    qInstallMessageHandler(ordinary);
    application.setApplicationName(QString::fromUtf8(application_name));

    g_state.quitting = false;
    g_state.task = build_window(resource, nullptr, task_handler, nullptr);
    if (!g_state.task) {
        fprintf(stderr, "%s: there is no window definition %d\n", application_name, resource);
        return 1;
    }
    const bool accepted = announce_window(g_state.task);
    int status = accepted || g_state.quitting ? 0 : 1;
    if (accepted) {
        show_window(g_state.task);
        // The product named on the command line is to be seen, not hidden behind the task window.
        for (Window *window : gui_windows())
            gui_raise(window);
        status = QApplication::exec();
    }
    gui_quit();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return status;
}

void gui_quit() {
    if (g_state.quitting)
        return;
    g_state.quitting = true;
    // The list shrinks as they go.
    const std::vector<Window *> windows(all_windows().begin(), all_windows().end());
    for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
        if (*window != g_state.task)
            end_window(*window);
    }
    end_window(g_state.task);
    g_state.task = nullptr;
    gui_close_help();
    QCoreApplication::exit(0);
}

bool is_quitting() {
    return g_state.quitting;
}

std::string gui_program_directory() {
    return QFile::encodeName(QCoreApplication::applicationDirPath()).toStdString();
}

void gui_copy_text(const std::string &text) {
    QGuiApplication::clipboard()->setText(QString::fromStdString(text));
}

std::string gui_toolkit_version() {
    return std::string("Qt ") + qVersion();
}

Window *gui_task_window() {
    return g_state.task;
}

// --- Errors -------------------------------------------------------------------------------------------------------

void gui_set_error_handler(ToolkitErrorHandler handler) {
    g_state.error_handler = handler;
}

void raise_toolkit_error(const ToolkitError &message) {
    const bool handled = g_state.error_handler && g_state.error_handler(message) != 0;
    if (handled || message.severity == 3 || g_state.error_shown)
        return;
    // Not here, where a window may be half painted; and not once more for every repaint while the box is shown.
    g_state.error_shown = true;
    const auto show = [text = message.text] {
        gui_error(text);
        g_state.error_shown = false;
    };
    QMetaObject::invokeMethod(qApp, show, Qt::QueuedConnection);
}

// --- Pointer ------------------------------------------------------------------------------------------------------

namespace {

void update_cursor() {
    if (!qApp)
        return;
    const bool busy = g_state.busy > 0;
    if (busy && !QGuiApplication::overrideCursor())
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    else if (!busy && QGuiApplication::overrideCursor())
        QGuiApplication::restoreOverrideCursor();
}

}  // namespace

BusyCursor::BusyCursor() {
    ++g_state.busy;
    update_cursor();
}

BusyCursor::~BusyCursor() {
    --g_state.busy;
    update_cursor();
}

OrdinaryCursor::OrdinaryCursor() : suspended_(std::exchange(g_state.busy, 0)) {
    update_cursor();
}

OrdinaryCursor::~OrdinaryCursor() {
    g_state.busy += suspended_;
    update_cursor();
}
