// Trees of products, and the dialogs of browse mode told apart by the controls that only they have.
#pragma once

#include "browse/browse.h"
#include "browse/model/browse_state.h"
#include "support/product.h"
#include "support/window_viewer.h"

#include <filesystem>

// Programs that run side by side would meet at the scratch file of their working directory.
class OwnDirectory final : public testing::Environment {
  public:
    void SetUp() override { std::filesystem::current_path(folder_.path()); }
    void TearDown() override { std::filesystem::current_path("/"); }

  private:
    ScratchFolder folder_;
};
inline testing::Environment *const g_own_directory = testing::AddGlobalTestEnvironment(new OwnDirectory);

enum class BrowseDialog { Path, OtherFile, Label, Continue, Timed, Listing };

inline BrowseDialog kind_of(const Window *dialog) {
    if (gui_has_control(dialog, 20))
        return BrowseDialog::Path;
    if (gui_has_control(dialog, 8))
        return BrowseDialog::OtherFile;
    if (gui_has_control(dialog, 7))
        return BrowseDialog::Label;
    if (gui_has_control(dialog, 6))
        return BrowseDialog::Timed;
    return gui_has_control(dialog, 2) ? BrowseDialog::Listing : BrowseDialog::Continue;
}

// The newest dialog of the kind; null when there is none.
inline Window *browse_dialog(BrowseDialog kind) {
    Window *newest = nullptr;
    for (Window *dialog : find_windows("Browser"))
        newest = kind_of(dialog) == kind ? dialog : newest;
    return newest;
}

inline Window *file_dialog() {
    Window *dialog = browse_dialog(BrowseDialog::Label);
    return dialog ? dialog : browse_dialog(BrowseDialog::OtherFile);
}

// The name that the dialog for a file shows.
inline std::string offered_name() {
    const Window *dialog = file_dialog();
    const std::string path = dialog ? gui_text(dialog, kind_of(dialog) == BrowseDialog::Label ? 2 : 1) : "";
    return path.substr(path.rfind('/') + 1);
}

inline Window *enter_browse_mode(ScriptedResponder *responder, const std::string &directory) {
    responder->directories = {directory};
    EXPECT_TRUE(choose_command(gui_task_window(), 1061));
    settle();
    return browse_dialog(BrowseDialog::Path);
}

// Presses a button and waits until the list is there.
inline void press(Window *dialog, int button) {
    ASSERT_TRUE(dialog);
    EXPECT_TRUE(use_control(dialog, button));
    EXPECT_TRUE(settle_until([] { return !browse_dialog(BrowseDialog::Listing); }));
    settle();
}

inline bool is_browsing() {
    return session().browser_count > 0;
}

inline void write_image(const ScratchFolder &folder, const std::string &name) {
    ImageProduct product;
    product.lines = product.samples = 16;
    product.data = std::string(256, 'x');
    write_attached(folder, name, product);
}
