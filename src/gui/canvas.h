// The canvas of one Update. Private to the folder.
#pragma once

#include "gui/gui.h"

#include <QBrush>
#include <QPainter>
#include <QRect>

struct Canvas {
    QPainter *painter;
    QRect exposed;  // in the client area
    QBrush background;
};
