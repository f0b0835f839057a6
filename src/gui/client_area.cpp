#include "gui/client_area.h"

#include "gui/canvas.h"
#include "gui/input.h"
#include "gui/window.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyle>
#include <QWheelEvent>

#include <cmath>

namespace {

constexpr int NOTCH = QWheelEvent::DefaultDeltasPerStep;

// Takes the whole pixels out of `rest` and returns them.
int whole_pixels(double *rest) {
    const double whole = std::trunc(*rest);
    *rest -= whole;
    return static_cast<int>(whole);
}

}  // namespace

ClientArea::ClientArea(QWidget *parent) : QAbstractScrollArea(parent) {
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setMouseTracking(true);
    // The handler of Update clears what it wants cleared.
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
}

void ClientArea::attach(Window *window) {
    window_ = window;
    // What the definition puts into the area belongs into the part without scroll bars. It covers the drawing there, so
    // that it can be read, and lets the mouse through.
    const QList<QWidget *> children = findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget *child : children) {
        if (!child->property("number").isValid())
            continue;
        const QRect place = child->geometry();
        child->setParent(viewport());
        child->setGeometry(place);
        child->setBackgroundRole(QPalette::Window);
        child->setForegroundRole(QPalette::WindowText);
        child->setAutoFillBackground(true);
        child->setAttribute(Qt::WA_TransparentForMouseEvents, child->focusPolicy() == Qt::NoFocus);
    }
}

// --- Scrolling ----------------------------------------------------------------------------------------------------

void ClientArea::set_content(QSize content, int step) {
    content_ = content.expandedTo({0, 0});
    step_ = qMax(1, step);
    update_scroll_bars();
    viewport()->update();
}

QPoint ClientArea::position() const {
    return {horizontalScrollBar()->value(), verticalScrollBar()->value()};
}

void ClientArea::scroll_to(QPoint target) {
    const QPoint old = position();
    {
        const QScopedValueRollback both(moving_, true);
        horizontalScrollBar()->setValue(target.x());
        verticalScrollBar()->setValue(target.y());
    }
    if (position() != old)
        scrollContentsBy(old.x() - position().x(), old.y() - position().y());
}

void ClientArea::scrollContentsBy(int, int) {
    if (moving_)
        return;
    viewport()->update();
    Event event;
    event.type = EventType::Scroll;
    send_event(window_, event);
}

void ClientArea::update_scroll_bars() {
    // Bars that are there only because bars are there must not count: measured is the area without them if that does.
    const QSize whole = maximumViewportSize();
    const bool fits = content_.width() <= whole.width() && content_.height() <= whole.height();
    const QSize shown = fits ? whole : viewport()->size();
    horizontalScrollBar()->setPageStep(shown.width());
    verticalScrollBar()->setPageStep(shown.height());
    horizontalScrollBar()->setSingleStep(step_);
    verticalScrollBar()->setSingleStep(step_);
    const QPoint old = position();
    {
        const QScopedValueRollback both(moving_, true);
        horizontalScrollBar()->setRange(0, qMax(0, content_.width() - shown.width()));
        verticalScrollBar()->setRange(0, qMax(0, content_.height() - shown.height()));
    }
    if (position() != old)
        scrollContentsBy(old.x() - position().x(), old.y() - position().y());
}

bool ClientArea::scroll_by_key(int key) {
    const QSize page = viewport()->size();
    const QPoint end(horizontalScrollBar()->maximum(), verticalScrollBar()->maximum());
    switch (key) {
        case Qt::Key_Left:
            scroll_to(position() - QPoint(step_, 0));
            return true;
        case Qt::Key_Right:
            scroll_to(position() + QPoint(step_, 0));
            return true;
        case Qt::Key_Up:
            scroll_to(position() - QPoint(0, step_));
            return true;
        case Qt::Key_Down:
            scroll_to(position() + QPoint(0, step_));
            return true;
        case Qt::Key_PageUp:
            scroll_to(position() - QPoint(0, page.height()));
            return true;
        case Qt::Key_PageDown:
            scroll_to(position() + QPoint(0, page.height()));
            return true;
        case Qt::Key_Home:
            scroll_to({0, 0});
            return true;
        case Qt::Key_End:
            scroll_to(end);
            return true;
        default:
            return false;
    }
}

// --- Size ---------------------------------------------------------------------------------------------------------

void ClientArea::set_size_hint(QSize size) {
    size_hint_ = size;
    // Every layout between here and the window remembers the last hint.
    for (QWidget *widget = this; widget && !widget->isWindow(); widget = widget->parentWidget())
        widget->updateGeometry();
}

QSize ClientArea::sizeHint() const {
    return size_hint_.isValid() ? size_hint_ : QAbstractScrollArea::sizeHint();
}

// What the scroll bars that the content needs take from the area.
QSize ClientArea::scroll_bars_at(QSize shown) const {
    const bool framed = style()->styleHint(QStyle::SH_ScrollView_FrameOnlyAroundContents, nullptr, this);
    const int space = framed ? style()->pixelMetric(QStyle::PM_ScrollView_ScrollBarSpacing, nullptr, this) : 0;
    return {content_.height() > shown.height() ? verticalScrollBar()->sizeHint().width() + space : 0,
            content_.width() > shown.width() ? horizontalScrollBar()->sizeHint().height() + space : 0};
}

QSize ClientArea::viewport_size_in(QSize area) const {
    const QSize whole = area - frame_size();
    // The bar that one direction needs can make the other direction need one.
    const QSize first = whole - scroll_bars_at(whole);
    return (whole - scroll_bars_at(first)).expandedTo({0, 0});
}

QSize ClientArea::size_for_viewport(QSize shown) const {
    return shown + scroll_bars_at(shown) + frame_size();
}

void ClientArea::resizeEvent(QResizeEvent *) {
    update_scroll_bars();
    Event event;
    event.type = EventType::Size;
    send_event(window_, event);
}

// --- Painting -----------------------------------------------------------------------------------------------------

void ClientArea::paintEvent(QPaintEvent *source) {
    QPainter painter(viewport());
    // On a screen of a fractional scale the exposed part may end within a screen pixel: that one is drawn too.
    const double scale = viewport()->devicePixelRatio();
    const bool fractional = scale != std::floor(scale);
    const QRect exposed = fractional ? source->rect().adjusted(-1, -1, 1, 1) : source->rect();
    const QBrush &ground = property("pictures").toBool() ? palette().dark() : palette().base();
    Canvas canvas{&painter, exposed & viewport()->rect(), ground};
    if (!window_ || window_->stage != WindowStage::Live) {
        painter.fillRect(canvas.exposed, canvas.background);
        return;
    }
    Event event;
    event.type = EventType::Update;
    event.canvas = &canvas;
    event.area = {canvas.exposed.x(), canvas.exposed.y(), canvas.exposed.width(), canvas.exposed.height()};
    const QScopedValueRollback painting(window_->painting, true);
    send_event(window_, event);
}

bool ClientArea::event(QEvent *event) {
    if (event->type() == QEvent::KeyPress && takes_tab(static_cast<const QKeyEvent &>(*event)))
        return true;
    const bool done = QAbstractScrollArea::event(event);
    switch (event->type()) {
        case QEvent::FocusIn:
        case QEvent::FocusOut:
            update();
            break;
        case QEvent::Paint:
            // On the frame, where it covers no pixel of the content.
            if (hasFocus() && frameWidth() > 0) {
                QPainter painter(this);
                painter.setPen(palette().color(QPalette::Highlight));
                painter.drawRect(rect().adjusted(0, 0, -1, -1));
            }
            break;
        default:
            break;
    }
    return done;
}

// --- Mouse and keys -----------------------------------------------------------------------------------------------

// The toolkit would move on to the next control without asking.
bool ClientArea::takes_tab(const QKeyEvent &key) {
    const bool is_tab = key.key() == Qt::Key_Tab || key.key() == Qt::Key_Backtab;
    return is_tab && !(key.modifiers() & Qt::ControlModifier) && send_event(window_, key_event(key)) != 0;
}

bool ClientArea::viewportEvent(QEvent *source) {
    if (source->type() == QEvent::Leave) {
        Event event;
        event.type = EventType::MouseLeave;
        send_event(window_, event);
    }
    return QAbstractScrollArea::viewportEvent(source);
}

void ClientArea::mousePressEvent(QMouseEvent *event) {
    send_event(window_, mouse_event(EventType::MouseDown, *event));
}
void ClientArea::mouseReleaseEvent(QMouseEvent *event) {
    send_event(window_, mouse_event(EventType::MouseUp, *event));
}
void ClientArea::mouseDoubleClickEvent(QMouseEvent *event) {
    send_event(window_, mouse_event(EventType::MouseDouble, *event));
}
void ClientArea::mouseMoveEvent(QMouseEvent *event) {
    send_event(window_, mouse_event(EventType::MouseMove, *event));
}

void ClientArea::wheelEvent(QWheelEvent *event) {
    event->accept();
    if (event->modifiers() & Qt::ControlModifier)
        zoom_by_wheel(*event);
    else
        scroll_by_wheel(*event);
}

// Touchpads turn the wheel by small fractions of a notch.
void ClientArea::zoom_by_wheel(const QWheelEvent &event) {
    const int angle = event.angleDelta().y();
    if ((angle < 0) != (zoom_angle_ < 0))
        zoom_angle_ = 0;
    zoom_angle_ += angle;
    const int steps = zoom_angle_ / NOTCH;
    zoom_angle_ -= steps * NOTCH;
    if (steps != 0)
        send_event(window_, wheel_event(event, steps));
}

void ClientArea::scroll_by_wheel(const QWheelEvent &event) {
    const double pixels_per_degree = double(step_) * QApplication::wheelScrollLines() / NOTCH;
    QPointF pixels =
        event.pixelDelta().isNull() ? QPointF(event.angleDelta()) * pixels_per_degree : QPointF(event.pixelDelta());
    if (event.modifiers() & Qt::ShiftModifier)
        pixels = pixels.transposed();
    scroll_rest_ += pixels;
    const int dx = whole_pixels(&scroll_rest_.rx());
    const int dy = whole_pixels(&scroll_rest_.ry());
    scroll_to(position() - QPoint(dx, dy));
}

// Keys go to the window, which asks its handler before it lets the area scroll.
void ClientArea::keyPressEvent(QKeyEvent *event) {
    event->ignore();
}
