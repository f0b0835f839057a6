// Strips of colours at menu items.
#include "gui/window.h"

#include <QAction>
#include <QImage>
#include <QMenu>
#include <QPixmap>
#include <QProxyStyle>

namespace {

constexpr int strip_width = 96;
constexpr int strip_height = 14;

// A menu gives its items' icons a square; a strip needs one as wide as it is.
class StripStyle final : public QProxyStyle {
  public:
    explicit StripStyle(QObject *menu) { setParent(menu); }

    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override {
        return metric == PM_SmallIconSize ? strip_width : QProxyStyle::pixelMetric(metric, option, widget);
    }
};

QIcon strip_of(const ColourTable &colours) {
    QImage image(256, 1, QImage::Format_RGB32);
    for (int i = 0; i < 256; ++i) {
        const Colour &colour = colours[static_cast<size_t>(i)];
        image.setPixel(i, 0, qRgb(colour.red, colour.green, colour.blue));
    }
    return QIcon(QPixmap::fromImage(image.scaled(strip_width, strip_height)));
}

}  // namespace

void gui_set_command_strip(Window *window, int command, const ColourTable &colours) {
    const QIcon strip = strip_of(colours);
    for (QAction *action : window->commands) {
        if (action->property("command").toInt() != command)
            continue;
        action->setIcon(strip);
        action->setIconVisibleInMenu(true);
        for (QObject *place : action->associatedObjects()) {
            auto *menu = qobject_cast<QMenu *>(place);
            if (menu && !dynamic_cast<StripStyle *>(menu->style()))
                menu->setStyle(new StripStyle(menu));
        }
    }
}
