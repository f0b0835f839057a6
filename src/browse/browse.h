// Browse mode: a walk through all files below a directory, each offered in turn, by hand or on a timer.
#pragma once

struct Window;

// Asks for a directory and opens the path dialog. At most one walk exists at a time. The window is not used.
void autobros(Window *window);
