#include "gui/help_browser.h"

#include <utility>

HelpBrowser::HelpBrowser(QWidget *parent) : QTextBrowser(parent) {
    setOpenExternalLinks(false);
    document()->setDocumentMargin(12);
}

QVariant HelpBrowser::loadResource(int, const QUrl &name) {
    return book_ ? book_(page_.resolved(name)) : QByteArray();
}

void HelpBrowser::doSetSource(const QUrl &url, QTextDocument::ResourceType type) {
    const QUrl target = page_.resolved(url);
    const QUrl page = target.adjusted(QUrl::RemoveFragment);
    if (!book_ || book_(page).isEmpty())
        return;
    page_ = page;
    QTextBrowser::doSetSource(target, type);
}
