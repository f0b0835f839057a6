// What the rest of this folder asks of the application. Private to the folder.
#pragma once

#include "gui/gui.h"

// From gui_quit on no window is made.
bool is_quitting();

// Hands a message to the installed handler and shows it, from the event loop, when that leaves it to the toolkit.
void raise_toolkit_error(const ToolkitError &message);

// While one exists the BusyCursors made before it do not count: the user is asked for something.
class OrdinaryCursor {
  public:
    OrdinaryCursor();
    ~OrdinaryCursor();
    OrdinaryCursor(const OrdinaryCursor &) = delete;
    OrdinaryCursor &operator=(const OrdinaryCursor &) = delete;

  private:
    const int suspended_;  // BusyCursors
};
