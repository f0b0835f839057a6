// Mouse and keyboard of the toolkit as events of ours. Private to the folder.
#pragma once

#include "gui/gui.h"

class QKeyEvent;
class QMouseEvent;
class QWheelEvent;

Event mouse_event(EventType type, const QMouseEvent &event);
Event wheel_event(const QWheelEvent &event, int steps);
// Shift, Control and their like, which are no keys of their own.
bool is_modifier_key(const QKeyEvent &event);
Event key_event(const QKeyEvent &event);
