// The text of a help page. Private to the folder.
#pragma once

#include <QTextBrowser>

#include <functional>

class HelpBrowser final : public QTextBrowser {
  public:
    // The bytes of a file of the book; empty when it has no such file.
    using Book = std::function<QByteArray(const QUrl &)>;

    explicit HelpBrowser(QWidget *parent);
    void set_book(Book book) { book_ = std::move(book); }

  protected:
    // Pages, style sheets and pictures come from the book, never from elsewhere.
    QVariant loadResource(int type, const QUrl &name) override;
    // A link that leads out of the book is not followed.
    void doSetSource(const QUrl &url, QTextDocument::ResourceType type) override;

  private:
    Book book_;
    QUrl page_;  // what its links, style sheets and pictures are relative to, from before it is shown
};
