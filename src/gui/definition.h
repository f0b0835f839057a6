// Windows and menu bars from their numbered Designer files. Private to the folder.
#pragma once

#include <memory>

class QMenuBar;
class QWidget;

// The root widget of ":/windows/NUMBER.ui" with its menu bar; null, after a warning that names the fault, when the
// definition or its menu bar is absent or broken.
std::unique_ptr<QWidget> load_window_definition(int resource);

// The menu bar of ":/menus/NUMBER.ui", with its menu items as children; null as above.
std::unique_ptr<QMenuBar> load_menu_bar(int resource);
