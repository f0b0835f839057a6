// The window of a help book. Private to the folder.
#pragma once

#include <QHelpEngine>
#include <QObject>
#include <QPointer>
#include <QTemporaryDir>
#include <QUrl>

#include <memory>

class HelpBrowser;
class QLineEdit;
class QWidget;

class HelpWindow final : public QObject {
  public:
    // Null when the file is no help book.
    static std::unique_ptr<HelpWindow> open(const QString &file);
    ~HelpWindow() override;

    // The first page when the book has no page of that name.
    void show_page(const QString &page);
    // Hides the window and deletes it from the event loop.
    void leave();

  private:
    explicit HelpWindow(const QString &collection);
    bool read_book(const QString &file);
    bool make_frame();
    void connect_pages();
    void connect_index();
    void connect_search();
    void add_shortcuts();
    void show_url(const QUrl &url);
    void find(bool backwards);
    void bring_up();
    void follow_modal_dialog();

    std::unique_ptr<QTemporaryDir> folder_;  // of the collection file, which the toolkit wants to write
    QHelpEngine engine_;
    QList<QUrl> pages_;
    QUrl first_page_;
    QPointer<QWidget> frame_;
    HelpBrowser *browser_ = nullptr;
    QLineEdit *sought_ = nullptr;
};
