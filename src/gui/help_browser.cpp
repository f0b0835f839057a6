#include "gui/help_browser.h"

#include <utility>

HelpBrowser::HelpBrowser(QWidget *parent) : QTextBrowser(parent) {
    setOpenExternalLinks(false);
}

QVariant HelpBrowser::loadResource(int, const QUrl &name) {
    return book_ ? book_(source().resolved(name)) : QByteArray();
}

void HelpBrowser::doSetSource(const QUrl &url, QTextDocument::ResourceType type) {
    const QUrl target = source().resolved(url);
    const QUrl page = target.adjusted(QUrl::RemoveFragment);
    if (target.isEmpty() || (book_ && !book_(page).isEmpty()))
        QTextBrowser::doSetSource(target, type);
}
