// The window that steps through a qube's bands and tells what it holds. Private to the folder.
#pragma once

#include "viewer/viewer.h"

// Brings it up to date, where it is open, after the image window showed other bands.
void follow_qube(Window *image_window);
