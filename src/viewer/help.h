// The help book: found when help is first asked for, shown by the windowing layer.
#pragma once

struct Window;

// To be called when the task window is made and when it goes.
void begin_help();
void end_help();

// Menu commands: the page of the window, the page of keys.
void show_window_help(Window *window);
void show_keyboard_help(Window *window);
