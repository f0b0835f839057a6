#include "gui/canvas.h"

#include "gui/application.h"

#include <QImage>

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr uint32_t OPAQUE = 0xff000000;

// One direction of a drawn image: where its positions in the client area are in the image.
struct Axis {
    int64_t origin;  // of the image's first pixel
    int zoom;
    int shrink;
    int first = 0;  // exposed positions
    int count = 0;

    Axis(int image_origin, int length, int zoom_factor, int shrink_factor, int from, int extent)
        : origin(image_origin), zoom(zoom_factor), shrink(shrink_factor) {
        const int64_t drawn = (int64_t(length) + shrink - 1) / shrink * zoom;
        const int64_t low = std::max<int64_t>(from, origin);
        const int64_t high = std::min<int64_t>(int64_t(from) + extent, origin + drawn);
        first = static_cast<int>(low);
        count = static_cast<int>(std::max<int64_t>(0, high - low));
    }
    size_t source(int index) const { return static_cast<size_t>((first + index - origin) / zoom * shrink); }
};

std::array<uint32_t, 256> colour_words(const ColourTable &colours) {
    std::array<uint32_t, 256> words;
    for (size_t i = 0; i < words.size(); ++i)
        words[i] = OPAQUE | uint32_t(colours[i].red) << 16 | uint32_t(colours[i].green) << 8 | colours[i].blue;
    return words;
}

// Fills one row of the picture; `word(i)` is the colour of pixel i of the image's row.
template <typename Word>
void fill_row(uint32_t *out, const Axis &columns, Word word) {
    if (columns.zoom == 1) {
        const size_t start = columns.source(0);
        const auto step = static_cast<size_t>(columns.shrink);
        const auto count = static_cast<size_t>(columns.count);
        if (step == 1) {
            for (size_t i = 0; i < count; ++i)
                out[i] = word(start + i);
        } else {
            for (size_t i = 0; i < count; ++i)
                out[i] = word(start + i * step);
        }
        return;
    }
    size_t source = columns.source(0);
    int64_t end = (columns.first - columns.origin) / columns.zoom * columns.zoom + columns.zoom + columns.origin;
    for (int x = 0; x < columns.count; ++source, end += columns.zoom) {
        const int run_end = static_cast<int>(std::min<int64_t>(columns.count, end - columns.first));
        std::fill(out + x, out + run_end, word(source));
        x = run_end;
    }
}

// The exposed part, at the client area's size.
void fill_picture(QImage *picture, const PixelImage &image, const Axis &columns, const Axis &rows) {
    const std::array<uint32_t, 256> words = colour_words(image.colours);
    const size_t row_bytes = static_cast<size_t>(image.width) * static_cast<size_t>(image.bytes_per_pixel);
    for (int y = 0; y < rows.count; ++y) {
        auto *out = reinterpret_cast<uint32_t *>(picture->scanLine(y));
        if (y > 0 && rows.source(y) == rows.source(y - 1)) {
            memcpy(out, picture->constScanLine(y - 1), static_cast<size_t>(columns.count) * sizeof *out);
            continue;
        }
        const uint8_t *row = image.pixels.get() + rows.source(y) * row_bytes;
        if (image.bytes_per_pixel == 1) {
            fill_row(out, columns, [&](size_t i) { return words[row[i]]; });
        } else {
            fill_row(out, columns, [&](size_t i) {
                uint32_t word;
                memcpy(&word, row + 4 * i, sizeof word);
                return word | OPAQUE;
            });
        }
    }
}

}  // namespace

void gui_clear(Canvas *canvas, const GuiRect &area) {
    canvas->painter->fillRect(QRect(area.left, area.top, area.width, area.height), canvas->background);
}

void gui_draw_image(Canvas *canvas, const PixelImage &image, int left, int top, int zoom, int shrink) {
    const QRect &exposed = canvas->exposed;
    zoom = std::max(1, zoom);
    shrink = zoom > 1 ? 1 : std::max(1, shrink);
    const Axis columns(left, image.width, zoom, shrink, exposed.x(), exposed.width());
    const Axis rows(top, image.height, zoom, shrink, exposed.y(), exposed.height());
    if (columns.count == 0 || rows.count == 0)
        return;
    QImage picture(columns.count, rows.count, QImage::Format_RGB32);
    if (picture.isNull() || !image.pixels) {
        raise_toolkit_error({1, 0x510000, "No memory for drawing an image"});
        return;
    }
    fill_picture(&picture, image, columns, rows);
    canvas->painter->drawImage(columns.first, rows.first, picture);
}

void gui_draw_cross_hair(Canvas *canvas, const GuiRect &place) {
    constexpr int HAIR = 9;  // pixels
    const QRect frame(place.left, place.top, place.width - 1, place.height - 1);
    const QPoint middle(place.left + place.width / 2, place.top + place.height / 2);
    const std::array<QLine, 4> hairs = {QLine(frame.left() - HAIR, middle.y(), frame.left() - 1, middle.y()),
                                        QLine(frame.right() + 2, middle.y(), frame.right() + 1 + HAIR, middle.y()),
                                        QLine(middle.x(), frame.top() - HAIR, middle.x(), frame.top() - 1),
                                        QLine(middle.x(), frame.bottom() + 2, middle.x(), frame.bottom() + 1 + HAIR)};
    QPen dashes(Qt::black);
    dashes.setDashPattern({3, 3});
    QPainter &painter = *canvas->painter;
    painter.save();
    painter.setBrush(Qt::NoBrush);
    for (const QPen &pen : {QPen(Qt::white), dashes}) {
        painter.setPen(pen);
        painter.drawRect(frame);
        painter.drawLines(hairs.data(), static_cast<int>(hairs.size()));
    }
    painter.restore();
}
