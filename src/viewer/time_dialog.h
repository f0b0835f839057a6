// The time parser: what a date or time of a label means.
#pragma once

#include "gui/gui.h"

void parse_time_dialog(Window *owner);
