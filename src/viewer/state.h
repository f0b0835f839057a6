// What a document window owns: one GenericState, freed when the window is destroyed.
#pragma once

#include "gui/gui.h"
#include "oa/oa.h"
#include "viewer/model/band_composite.h"
#include "viewer/model/display_control.h"
#include "viewer/model/image_description.h"
#include "viewer/model/level_histogram.h"
#include "viewer/model/sample_range.h"
#include "viewer/model/sample_source.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// A file as it was once seen: another of its name, or other contents, differ.
struct FileStamp {
    uint64_t device = 0;
    uint64_t number = 0;
    int64_t bytes = -1;  // -1: not seen
    int64_t seconds = 0;
    int64_t nanoseconds = 0;

    bool operator==(const FileStamp &) const = default;
};
FileStamp stamp_of_file(const std::string &path);

// The product behind a window.
struct LabelState {
    std::string file_name;                 // of the label, within GenericState::directory
    OdlTree root;                          // the whole label
    ObjDesc *current_object = nullptr;     // what the window shows; within `root`
    bool object_chosen = false;            // the user did choose the current object, in a list
    bool label_from_another_file = false;  // the label that was parsed is not the file that the user chose
    bool text_only = false;                // shown as plain text
    bool new_fits_label = false;           // of a new label until it is saved: for the file that `file_name` names
    bool label_only = false;               // of a text window: it shows the file to the END of its label
    bool shown_in_part = false;            // of a text window: the file holds more than the window shows
    FileStamp shown_file;                  // of a text window: when it was read or saved
    bool line_ends_shown = false;          // of a text window: as "<CR>" and "<LF>"
    int image_count = 0;                   // images opened from this label
    SampleBlock requested_block;           // of a window on one block; no lines: the window decides
    OaObjectPtr image_data;                // native samples of the block shown
};

// A pixel of the display image, from 0; column -1: nowhere.
struct PixelPosition {
    int64_t column = -1;
    int64_t row = -1;

    bool is_somewhere() const { return column >= 0; }
};

// How an image window draws its image.
struct DisplayState {
    std::unique_ptr<SampleSource> source;
    int zoom = 1;    // screen pixels an image pixel
    int shrink = 1;  // image pixels a screen pixel; one of the two is 1
    DisplayControl control;
    std::optional<ColourTable> file_colours;  // that the product brings along
    bool is_of_qube = false;
    std::string part_name;               // of what the image shows of its product, for the title; may be empty
    bool keeps_fitting = false;          // the zoom follows the window's size until the user zooms
    std::optional<RealRange> stretched;  // samples between black and white; none: as opened
    bool integers_as_hexadecimal = false;
    bool status_shown = false;
    bool remark_shown = false;  // in place of the read-out
    GuiPoint pointer;           // where the mouse was last seen in the client area
    PixelPosition cursor;       // of the read-out that the arrow keys move; not shown while it is nowhere
    PixelPosition read_out;     // the pixel read out last
};

// The bands of a product that has several, and which of them the window shows.
struct BandState {
    BandSourceMaker maker;
    int64_t count = 0;
    std::vector<std::string> names;  // of all bands, or none
    bool greys_are_plain = false;    // one band as grey without limits is shown by its own source, not as a composite
    BandChoice choice;               // shown
    BandChoice colours;              // that the dialog proposes: those shown last, else the usual ones
    std::optional<BandChoice> unstretched;     // what undoing goes back to after a stretch, which typed other limits
    const BandComposite *composite = nullptr;  // the display state's source, where it is one
};

// Which kind of document a window shows; the command table chooses by it.
enum class DocumentKind : uint32_t { Label = 0, Image = 1, Bands = 2, Table = 3, Listing = 4, Histogram = 5 };

// What a window with a list of lines begins with.
struct ListingState {
    GuiRect place;
    std::vector<std::string> lines;
    bool of_table = false;  // else of an image
};

struct GenericState;

// What a module besides this one keeps for its windows.
struct ModuleState {
    virtual ~ModuleState() = default;

    // Whether its window has a command of CommandScope::Qube.
    virtual bool offers(int /*command*/) const { return false; }

    // Of image windows. What a window on another block of the same image begins with.
    virtual std::unique_ptr<ModuleState> twin() const { return nullptr; }
    // The source of such a window. It may fill in the display state and the bands.
    virtual std::unique_ptr<SampleSource> prepare_image(GenericState *) { return nullptr; }
    // The window shows another choice of bands.
    virtual void follow_bands(Window *) {}
};

// What a histogram window shows of the image window that owns it.
struct HistogramState {
    Window *image_window = nullptr;
    LevelHistogram histogram;
    DisplayBar bar = DisplayBar::Black;  // that keys move
    bool dragging = false;               // by the mouse
    double grip = 0;                     // pixels from the bar to where the mouse took it
    int pointed_level = -1;              // under the mouse; -1: none
};

struct GenericState {
    bool belongs_to_window = false;  // else whoever makes the window still holds it
    DocumentKind kind = DocumentKind::Label;
    std::string directory;    // of the product, without a slash at its end
    std::string browser_tag;  // "" unless opened from browse mode
    std::unique_ptr<LabelState> label_state;
    std::unique_ptr<ImageDescription> image_info;
    std::unique_ptr<DisplayState> display_state;  // after the label, which its source reads
    std::unique_ptr<BandState> bands;             // of images of several bands
    std::unique_ptr<ListingState> listing;
    std::unique_ptr<HistogramState> histogram;
    std::unique_ptr<ModuleState> module;  // after the label, which it may point into
    std::map<int, Window *> children;     // opened from this window, by the command that opens them
    Window *opened_from = nullptr;        // the window that holds this one among its children
};

// Makes a document window whose data is the state, and hands the state to it. Where no window comes of it, because the
// handler refused or the window went again at once, the state ends here. It goes with its owner, which may be null.
// Null when there is no window.
Window *open_document_window(int resource, EventHandler handler, std::unique_ptr<GenericState> state,
                             Window *owner = nullptr);

// Windows that a window keeps at most one of: the label, hierarchy or keywords of an image. Each stands on its own and
// may outlive the window it was opened from.
void keep_child(Window *window, int command, Window *child);  // a null child is ignored
void leave_opener(Window *window);                            // it is no longer the one that was asked for
// The window that the command opened from this one; null when there is none.
Window *child_of(const GenericState *state, int command);
// The same, brought to the front.
Window *raise_child(const Window *window, int command);

// For the window's Destroy event: ends its state, unless the window was still being made.
void free_window_state(Window *window);
// The state of a document window, during its Create event too; null for the task window. Not for dialogs.
GenericState *window_state(const Window *window);

// The display image of a window's state; null when it has none. The state may be null.
PixelImage *display_image(const GenericState *state);
// The native samples that the display image was made of, as the image description tells of them; null when there is not
// one for every pixel, as behind a picture of several bands.
const void *samples_shown(const GenericState *state);

// At most `limit` bytes of a name, whole UTF-8 characters only.
std::string shown_name(const std::string &name, size_t limit);
