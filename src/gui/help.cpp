// The open help book, and F1.
#include "gui/help.h"

#include "base/file.h"
#include "gui/gui.h"
#include "gui/help_window.h"
#include "gui/window.h"

#include <QApplication>
#include <QFile>
#include <QKeyEvent>
#include <QWidget>

namespace {

HelpHandler g_help_handler = nullptr;
HelpWindow *g_book = nullptr;

std::string page_of(const QWidget *widget) {
    return widget->window()->property("helpPage").toString().toStdString();
}

}  // namespace

HelpAnswer gui_open_help(const std::string &file) {
    if (!util_open_regular(file.c_str()))
        return HelpAnswer::Unreadable;
    std::unique_ptr<HelpWindow> book = HelpWindow::open(QFile::decodeName(file.c_str()));
    if (!book)
        return HelpAnswer::NotHelp;
    gui_close_help();
    g_book = book.release();
    return HelpAnswer::Ok;
}

bool gui_help_is_open() {
    return g_book != nullptr;
}

void gui_close_help() {
    if (!g_book)
        return;
    // Later, as this may be called by one of its own keys.
    g_book->leave();
    g_book = nullptr;
}

void gui_show_help(const std::string &page) {
    if (g_book)
        g_book->show_page(QString::fromStdString(page));
}

std::string gui_help_page(const Window *window) {
    return page_of(window->frame);
}

void gui_set_help_handler(HelpHandler handler) {
    g_help_handler = handler;
}

bool take_help_key(QObject *receiver, const QEvent &event) {
    if (event.type() != QEvent::KeyPress || !receiver->isWidgetType() || !g_help_handler)
        return false;
    const auto &key = static_cast<const QKeyEvent &>(event);
    if (key.key() != Qt::Key_F1 || key.modifiers() != Qt::NoModifier || QApplication::activePopupWidget())
        return false;
    g_help_handler(page_of(static_cast<QWidget *>(receiver)));
    return true;
}
