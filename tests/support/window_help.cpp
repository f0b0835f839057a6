#include "support/window_help.h"

#include "gui/definition.h"
#include "gui/window.h"
#include "support/window_driver.h"

#include <QAbstractButton>
#include <QApplication>
#include <QHelpContentWidget>
#include <QHelpIndexWidget>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QTabWidget>
#include <QTest>
#include <QTextBrowser>
#include <QWindow>

#include <deque>

namespace {

QWidget *help_window() {
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->objectName() == QLatin1String("HelpWindow") && window->isVisible())
            return window;
    }
    return nullptr;
}

template <typename Widget>
Widget *in_help(const char *name = "") {
    return help_window()->findChild<Widget *>(QLatin1String(name));
}

template <typename Widget>
Widget *only_in_help() {
    return help_window()->findChild<Widget *>();
}

}  // namespace

void press_help_key(Window *window) {
    QWidget *focus = window->frame->focusWidget();
    QTest::keyClick(focus ? focus : window->frame, Qt::Key_F1);
}

void press_help_key_in_box() {
    QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_F1);
}

std::string help_page_shown() {
    return help_window() ? only_in_help<QTextBrowser>()->documentTitle().toStdString() : std::string();
}

void press_help_button(const char *name) {
    const auto *button = in_help<QAbstractButton>(name);
    QTest::mouseClick(help_window()->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      button->mapTo(help_window(), button->rect().center()));
}

bool choose_help_contents(const std::string &title) {
    auto *list = only_in_help<QHelpContentWidget>();
    const QAbstractItemModel *model = list->model();
    QModelIndexList found;
    settle_until([&] {
        if (model->rowCount() > 0)
            found = model->match(model->index(0, 0), Qt::DisplayRole, QString::fromStdString(title), 1,
                                 Qt::MatchExactly | Qt::MatchRecursive);
        return !found.isEmpty();
    });
    if (found.isEmpty())
        return false;
    list->setCurrentIndex(found[0]);
    QTest::keyClick(list, Qt::Key_Return);
    return true;
}

bool look_up_in_help(const std::string &word) {
    QTest::keyClick(help_window(), Qt::Key_D, Qt::AltModifier);
    auto *filter = in_help<QLineEdit>("filter");
    const auto *list = only_in_help<QHelpIndexWidget>();
    filter->clear();
    QTest::keyClicks(filter, QString::fromStdString(word));
    const bool found = settle_until([&] { return list->model()->rowCount() > 0; });
    QTest::keyClick(filter, Qt::Key_Return);
    return found;
}

void follow_first_help_link() {
    auto *page = only_in_help<QTextBrowser>();
    QTest::keyClick(page, Qt::Key_Tab);
    QTest::keyClick(page, Qt::Key_Return);
}

void go_to_help_url(const std::string &url) {
    only_in_help<QTextBrowser>()->setSource(QUrl(QString::fromStdString(url)));
}

std::string find_in_help(const std::string &text) {
    QTest::keyClick(help_window(), Qt::Key_F, Qt::ControlModifier);
    auto *sought = in_help<QLineEdit>("sought");
    QTest::keyClicks(sought, QString::fromStdString(text));
    QTest::keyClick(sought, Qt::Key_Return);
    return only_in_help<QTextBrowser>()->textCursor().selectedText().toStdString();
}

void close_help_window_by_key() {
    QTest::keyClick(help_window(), Qt::Key_Escape);
}

std::vector<MenuItem> menu_items(int resource) {
    const std::unique_ptr<QMenuBar> bar = load_menu_bar(resource);
    std::vector<MenuItem> items;
    std::deque<std::pair<QWidget *, QString>> menus;
    if (bar)
        menus.emplace_back(bar.get(), QString());
    for (; !menus.empty(); menus.pop_front()) {
        const auto [menu, path] = menus.front();
        for (QAction *action : menu->actions()) {
            if (action->isSeparator())
                continue;
            MenuItem item;
            const QString text = action->text();
            item.menu = path.toStdString();
            item.text = QString(text).remove('&').toStdString();
            item.mnemonic = text.contains('&') ? text.mid(text.indexOf('&') + 1, 1).toUpper().toStdString() : "";
            item.shortcut = action->shortcut().toString().toStdString();
            item.command = action->property("command").toInt();
            item.is_menu = action->menu() != nullptr;
            item.edits_text = action->property("edit").isValid();
            items.push_back(item);
            if (item.is_menu)
                menus.emplace_back(action->menu(),
                                   path + (path.isEmpty() ? "" : "/") + QString::fromStdString(item.text));
        }
    }
    return items;
}
