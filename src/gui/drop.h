// Files dropped on a window. Private to the folder.
#pragma once

class QEvent;
struct Window;

// Takes a drag-and-drop event if it carries local files; false when it does not.
bool take_drop(Window *window, QEvent *event);
