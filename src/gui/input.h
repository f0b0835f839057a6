// Mouse and keyboard of the toolkit as events of ours. Private to the folder.
#pragma once

#include "gui/gui.h"

class QKeyEvent;
class QMouseEvent;
class QWheelEvent;

Event mouse_event(EventType type, const QMouseEvent &event);
Event wheel_event(const QWheelEvent &event, int steps);
Event key_event(const QKeyEvent &event);
