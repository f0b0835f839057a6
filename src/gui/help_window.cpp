#include "gui/help_window.h"

#include "gui/definition.h"
#include "gui/gui.h"
#include "gui/help_browser.h"

#include <QAbstractButton>
#include <QApplication>
#include <QHelpContentWidget>
#include <QHelpIndexWidget>
#include <QHelpLink>
#include <QLineEdit>
#include <QShortcut>
#include <QSplitter>
#include <QTabWidget>
#include <QVBoxLayout>
#include <QWindow>

#include <utility>

// --- Book ---------------------------------------------------------------------------------------------------------

std::unique_ptr<HelpWindow> HelpWindow::open(const QString &file) {
    auto folder = std::make_unique<QTemporaryDir>();
    if (!folder->isValid())
        return nullptr;
    std::unique_ptr<HelpWindow> window(new HelpWindow(folder->filePath(QStringLiteral("help.qhc"))));
    window->folder_ = std::move(folder);
    return window->read_book(file) && window->make_frame() ? std::move(window) : nullptr;
}

HelpWindow::HelpWindow(const QString &collection) : engine_(collection) {
    engine_.setReadOnly(false);
    engine_.setUsesFilterEngine(true);
}

HelpWindow::~HelpWindow() {
    // The lists of contents and index look into the engine.
    delete frame_;
}

bool HelpWindow::read_book(const QString &file) {
    const QString name = QHelpEngineCore::namespaceName(file);
    if (name.isEmpty() || !engine_.setupData() || !engine_.registerDocumentation(file))
        return false;
    pages_ = engine_.files(name, QString(), QStringLiteral("html"));
    for (const QUrl &page : std::as_const(pages_)) {
        if (first_page_.isEmpty() || page.fileName() == QLatin1String("index.html"))
            first_page_ = page;
    }
    return !first_page_.isEmpty();
}

void HelpWindow::show_page(const QString &page) {
    QUrl url = first_page_;
    for (const QUrl &candidate : std::as_const(pages_)) {
        if (candidate.fileName() == page)
            url = candidate;
    }
    show_url(url);
    bring_up();
}

void HelpWindow::leave() {
    frame_->hide();
    deleteLater();
}

void HelpWindow::show_url(const QUrl &url) {
    browser_->setSource(url);
}

// --- Window -------------------------------------------------------------------------------------------------------

namespace {

// Puts a list of the book's into the page of the tabs that the definition keeps for it.
template <typename List>
List *place_list(QWidget *frame, const char *page, List *list, const char *name) {
    auto *place = frame->findChild<QWidget *>(QLatin1String(page));
    list->setAccessibleName(QLatin1String(name));
    place->layout()->addWidget(list);
    return list;
}

void on_button(const QWidget *frame, const char *name, HelpWindow *window, const std::function<void()> &action) {
    QObject::connect(frame->findChild<QAbstractButton *>(QLatin1String(name)), &QAbstractButton::clicked, window,
                     action);
}

}  // namespace

bool HelpWindow::make_frame() {
    frame_ = load_window_definition(gui_help_window).release();
    if (!frame_)
        return false;
    browser_ = frame_->findChild<HelpBrowser *>();
    sought_ = frame_->findChild<QLineEdit *>(QStringLiteral("sought"));
    browser_->set_book([this](const QUrl &url) { return engine_.fileData(engine_.findFile(url)); });
    // Room for the longest line of the contents.
    frame_->findChild<QSplitter *>()->setSizes({310, 590});
    connect_pages();
    connect_index();
    connect_search();
    add_shortcuts();
    return true;
}

void HelpWindow::connect_pages() {
    auto *contents = place_list(frame_, "contentsPage", engine_.contentWidget(), "Contents");
    connect(contents, &QHelpContentWidget::linkActivated, this, &HelpWindow::show_url);
    const auto mark_page = [this, contents] {
        const QModelIndex place = contents->indexOf(browser_->source());
        if (place.isValid())
            contents->setCurrentIndex(place);
    };
    connect(engine_.contentModel(), &QHelpContentModel::contentsCreated, this, [contents, mark_page] {
        contents->expandAll();
        mark_page();
    });
    connect(browser_, &QTextBrowser::sourceChanged, this, [this, mark_page] {
        const QString title = browser_->documentTitle();
        const QString program = QApplication::applicationName();
        const QString help = program + QStringLiteral(" Help");
        frame_->setWindowTitle(title.isEmpty() || title == program ? help : title + QStringLiteral(" - ") + help);
        mark_page();
    });

    const auto *back = frame_->findChild<QAbstractButton *>(QStringLiteral("back"));
    const auto *forward = frame_->findChild<QAbstractButton *>(QStringLiteral("forward"));
    connect(browser_, &QTextBrowser::backwardAvailable, back, &QWidget::setEnabled);
    connect(browser_, &QTextBrowser::forwardAvailable, forward, &QWidget::setEnabled);
    on_button(frame_, "back", this, [this] { browser_->backward(); });
    on_button(frame_, "forward", this, [this] { browser_->forward(); });
    on_button(frame_, "first", this, [this] { show_url(first_page_); });
}

void HelpWindow::connect_index() {
    auto *index = place_list(frame_, "indexPage", engine_.indexWidget(), "Index");
    const auto *filter = frame_->findChild<QLineEdit *>(QStringLiteral("filter"));
    connect(filter, &QLineEdit::textChanged, index, [index](const QString &text) { index->filterIndices(text); });
    connect(filter, &QLineEdit::returnPressed, index, &QHelpIndexWidget::activateCurrentItem);
    connect(index, &QHelpIndexWidget::documentActivated, this, [this](const QHelpLink &link) { show_url(link.url); });
    connect(index, &QHelpIndexWidget::documentsActivated, this,
            [this](const QList<QHelpLink> &links) { show_url(links.value(0).url); });
}

// --- Search in the page -------------------------------------------------------------------------------------------

void HelpWindow::connect_search() {
    connect(sought_, &QLineEdit::returnPressed, this, [this] { find(false); });
    on_button(frame_, "next", this, [this] { find(false); });
    on_button(frame_, "previous", this, [this] { find(true); });
}

void HelpWindow::find(bool backwards) {
    const QTextDocument::FindFlags flags = backwards ? QTextDocument::FindBackward : QTextDocument::FindFlags();
    if (browser_->find(sought_->text(), flags))
        return;
    // Once more from the other end; where nothing is found, the place stays.
    const QTextCursor place = browser_->textCursor();
    browser_->moveCursor(backwards ? QTextCursor::End : QTextCursor::Start);
    if (!browser_->find(sought_->text(), flags))
        browser_->setTextCursor(place);
}

void HelpWindow::add_shortcuts() {
    const auto on_keys = [this](const QList<QKeySequence> &keys, const std::function<void()> &action) {
        for (const QKeySequence &key : keys)
            connect(new QShortcut(key, frame_), &QShortcut::activated, this, action);
    };
    const auto standard = [](QKeySequence::StandardKey key) { return QKeySequence::keyBindings(key); };
    on_keys({QKeySequence(Qt::ALT | Qt::Key_Left)}, [this] { browser_->backward(); });
    on_keys({QKeySequence(Qt::ALT | Qt::Key_Right)}, [this] { browser_->forward(); });
    on_keys({QKeySequence(Qt::ALT | Qt::Key_Home)}, [this] { show_url(first_page_); });
    on_keys(standard(QKeySequence::Find), [this] {
        sought_->setFocus();
        sought_->selectAll();
    });
    on_keys({QKeySequence(Qt::Key_F3)}, [this] { find(false); });
    on_keys({QKeySequence(Qt::SHIFT | Qt::Key_F3)}, [this] { find(true); });
    on_keys({QKeySequence(Qt::CTRL | Qt::Key_W), QKeySequence(Qt::Key_Escape)}, [this] { frame_->close(); });
    on_keys({QKeySequence(Qt::CTRL | Qt::Key_Q)}, [] { QCoreApplication::quit(); });
}

// --- Place among the windows --------------------------------------------------------------------------------------

void HelpWindow::bring_up() {
    follow_modal_dialog();
    if (frame_->isMinimized())
        frame_->showNormal();
    frame_->show();
    frame_->raise();
    frame_->activateWindow();
    browser_->setFocus();
}

// While a dialog waits, only what belongs to it can be used.
void HelpWindow::follow_modal_dialog() {
    frame_->winId();
    QWindow *frame = frame_->windowHandle();
    QWindow *dialog = QGuiApplication::modalWindow();
    if (frame->transientParent() == dialog)
        return;
    // Window managers read it when a window is shown.
    frame_->hide();
    frame->setTransientParent(dialog);
    if (dialog) {
        connect(dialog, &QWindow::visibleChanged, frame, [frame](bool visible) {
            if (!visible)
                frame->setTransientParent(nullptr);
        });
    }
}
