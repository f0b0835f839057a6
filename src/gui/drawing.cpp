// Lines, rectangles and texts on a canvas, and the desktop's colours for them.
#include "gui/canvas.h"
#include "gui/client_area.h"
#include "gui/window.h"

#include <QApplication>
#include <QBuffer>
#include <QFontMetrics>
#include <QImage>
#include <QPalette>

#include <cmath>

namespace {

QColor colour_of(Colour colour) {
    return {colour.red, colour.green, colour.blue};
}

Colour plain(const QColor &colour) {
    return {static_cast<uint8_t>(colour.red()), static_cast<uint8_t>(colour.green()),
            static_cast<uint8_t>(colour.blue())};
}

QColor halfway(const QColor &one, const QColor &other) {
    return {(one.red() + other.red()) / 2, (one.green() + other.green()) / 2, (one.blue() + other.blue()) / 2};
}

// What of a drawn place can be seen. Places may lie far outside what the painter counts in.
QRect visible(const Canvas &canvas, const GuiRect &place) {
    return QRect(place.left, place.top, place.width, place.height) & canvas.exposed;
}

QFont font_of(double points) {
    QFont font = QApplication::font();
    if (points > 0)
        font.setPointSizeF(points);
    return font;
}

bool is_straight(const QPolygonF &line) {
    for (qsizetype i = 1; i < line.size(); ++i) {
        if (line[i].x() != line[i - 1].x() && line[i].y() != line[i - 1].y())
            return false;
    }
    return true;
}

bool is_drawable(GuiPoint point) {
    constexpr double farthest = 1e6;  // beyond it the painter loses precision, and time with dashes and caps
    return std::fabs(point.x) <= farthest && std::fabs(point.y) <= farthest;
}

}  // namespace

void gui_draw_line(Canvas *canvas, GuiPoint from, GuiPoint to, Colour colour, double pen_width) {
    gui_draw_lines(canvas, {from, to}, colour, pen_width);
}

void gui_draw_lines(Canvas *canvas, const std::vector<GuiPoint> &points, Colour colour, double pen_width) {
    QPolygonF line;
    for (const GuiPoint &point : points) {
        if (!is_drawable(point))
            return;
        // Pixels are meant, and those have their middle half a pixel on.
        line.append({point.x + 0.5, point.y + 0.5});
    }
    QPainter &painter = *canvas->painter;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, !is_straight(line));
    painter.setPen(QPen(colour_of(colour), pen_width, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin));
    painter.drawPolyline(line);
    painter.restore();
}

void gui_draw_rectangle(Canvas *canvas, const GuiRect &place, Colour colour, int pen_width) {
    const int width = qMin(pen_width, qMin(place.width, place.height));
    const int right = place.left + place.width - width;
    const int bottom = place.top + place.height - width;
    gui_fill_rectangle(canvas, {place.left, place.top, place.width, width}, colour);
    gui_fill_rectangle(canvas, {place.left, bottom, place.width, width}, colour);
    gui_fill_rectangle(canvas, {place.left, place.top, width, place.height}, colour);
    gui_fill_rectangle(canvas, {right, place.top, width, place.height}, colour);
}

void gui_fill_rectangle(Canvas *canvas, const GuiRect &place, Colour colour) {
    if (place.width > 0 && place.height > 0)
        canvas->painter->fillRect(visible(*canvas, place), colour_of(colour));
}

void gui_draw_text(Canvas *canvas, const GuiRect &place, const std::string &text, Colour colour, double points,
                   TextAlign align) {
    const Qt::Alignment across = align == TextAlign::Left    ? Qt::AlignLeft
                                 : align == TextAlign::Right ? Qt::AlignRight
                                                             : Qt::AlignHCenter;
    QPainter &painter = *canvas->painter;
    painter.save();
    painter.setFont(font_of(points));
    painter.setPen(colour_of(colour));
    painter.drawText(QRect(place.left, place.top, place.width, place.height),
                     static_cast<int>(across | Qt::AlignVCenter) | Qt::TextSingleLine | Qt::TextDontClip,
                     QString::fromStdString(text));
    painter.restore();
}

GuiSize gui_text_size(const std::string &text, double points) {
    const QFontMetrics metrics(font_of(points));
    return {metrics.horizontalAdvance(QString::fromStdString(text)), metrics.height()};
}

Colour gui_colour(GuiColour role) {
    const QPalette palette = QApplication::palette();
    const QColor ground = palette.color(QPalette::Base);
    const QColor text = palette.color(QPalette::Text);
    switch (role) {
        case GuiColour::Ground:
            return plain(ground);
        case GuiColour::Text:
            return plain(text);
        case GuiColour::Faint:
            return plain(halfway(ground, text));
        case GuiColour::Accent:
            return plain(palette.color(QPalette::Highlight));
    }
    return {};
}

std::string gui_png(GuiSize size, int scale, const std::function<void(Canvas *canvas)> &draw) {
    QImage image(size.width * scale, size.height * scale, QImage::Format_RGB32);
    if (image.isNull())
        return "";
    image.setDevicePixelRatio(scale);
    image.fill(Qt::white);
    QPainter painter(&image);
    Canvas canvas = {&painter, QRect(0, 0, size.width, size.height), Qt::white};
    draw(&canvas);
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    return buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "PNG") ? bytes.toStdString() : "";
}

void gui_set_pointer(Window *window, PointerShape shape) {
    if (!window->client)
        return;
    const Qt::CursorShape cursor = shape == PointerShape::Cross       ? Qt::CrossCursor
                                   : shape == PointerShape::LeftRight ? Qt::SplitHCursor
                                                                      : Qt::ArrowCursor;
    window->client->viewport()->setCursor(cursor);
}
