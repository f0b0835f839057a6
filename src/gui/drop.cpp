#include "gui/drop.h"

#include "gui/window.h"

#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

namespace {

// By way of the URL's own bytes: a file name need not be UTF-8.
std::vector<std::string> local_files(const QMimeData &data) {
    std::vector<std::string> files;
    const QList<QUrl> urls = data.urls();
    for (const QUrl &url : urls) {
        if (url.isLocalFile())
            files.push_back(QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()).toStdString());
    }
    return files;
}

}  // namespace

bool take_drop(Window *window, QEvent *source) {
    auto *drop = static_cast<QDropEvent *>(source);
    std::vector<std::string> files = local_files(*drop->mimeData());
    if (files.empty() || window->is_dialog())
        return false;
    // Never a move, after which the source would delete the files.
    drop->setDropAction(Qt::CopyAction);
    drop->accept();
    if (source->type() == QEvent::Drop) {
        // Later, for opening may take long and ask questions, and the source waits for this event's end.
        const auto deliver = [files = std::move(files)] {
            Event event;
            event.type = EventType::FileDrop;
            event.files = files;
            send_event(gui_task_window(), event);
        };
        QMetaObject::invokeMethod(gui_task_window(), deliver, Qt::QueuedConnection);
    }
    return true;
}
