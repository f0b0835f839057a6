#include "gui/application.h"
#include "gui/window.h"

#include <QLabel>
#include <QProgressDialog>

#include <algorithm>
#include <optional>

namespace {
constexpr int steps = 1000;
constexpr int milliseconds_without = 500;
}  // namespace

struct Progress::Box {
    explicit Box(Window *of) : owner(of), dialog(of->frame) {}

    Window *owner;
    QProgressDialog dialog;
    std::optional<BusyCursor> busy;
};

Progress::Progress(Window *owner, const std::string &text) : box_(std::make_unique<Box>(owner)) {
    QProgressDialog &dialog = box_->dialog;
    auto *label = new QLabel(QString::fromStdString(text));
    label->setTextFormat(Qt::PlainText);
    dialog.setLabel(label);
    dialog.setWindowTitle(QString::fromStdString(gui_title(owner)));
    dialog.setCancelButtonText(QStringLiteral("&Cancel"));
    dialog.setWindowModality(Qt::ApplicationModal);
    dialog.setMinimumDuration(milliseconds_without);
    dialog.setRange(0, steps);
    dialog.setAutoReset(false);
    dialog.setAutoClose(false);
    QObject::connect(&dialog, &QDialog::rejected, &dialog, &QProgressDialog::cancel);
    box_->busy.emplace();
    dialog.setValue(0);
}

Progress::~Progress() = default;

bool Progress::go_on(double part) {
    QProgressDialog &dialog = box_->dialog;
    if (dialog.wasCanceled() || is_quitting() || !gui_window_exists(box_->owner))
        return false;
    dialog.setValue(static_cast<int>(std::clamp(part, 0.0, 1.0) * steps));
    if (dialog.isVisible())
        box_->busy.reset();
    return !dialog.wasCanceled() && !is_quitting() && gui_window_exists(box_->owner);
}
