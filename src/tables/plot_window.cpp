// The window that draws one column against another in a frame of fixed size.
#include "tables/page_state.h"
#include "tables/plot_state.h"

namespace {

constexpr int plot_window_resource = 260;
constexpr double font_points = 9;
constexpr GuiSize content = {640, 310};  // that holds the frame and its texts

struct PlotState : ModuleState {
    std::shared_ptr<PlotSource> source;
    PlotChoice choice;
    std::array<PlotText, 6> texts;
    PlotPicture picture;
};

PlotState *plot_state(const Window *window) {
    const GenericState *state = window_state(window);
    return state ? dynamic_cast<PlotState *>(state->module.get()) : nullptr;
}

void draw_text(Canvas *canvas, const PlotText &text, int left, int top) {
    // The part of a line of text above its base line is about four fifths.
    const GuiSize size = gui_text_size(text.text, font_points);
    const int place = top + static_cast<int>(text.start.y) - size.height * 4 / 5;
    gui_draw_text(canvas, {left + static_cast<int>(text.start.x), place, size.width, size.height}, text.text,
                  gui_colour(GuiColour::Text), font_points);
}

void build_plot(Window *window, const Event &event) {
    const PlotState &plot = *plot_state(window);
    gui_clear(event.canvas, event.area);
    const GuiPoint scrolled = gui_scroll_position(window);
    const int left = -static_cast<int>(scrolled.x);
    const int top = -static_cast<int>(scrolled.y);
    if (PixelImage *image = plot.picture.image.get()) {
        image->colours[0] = gui_colour(GuiColour::Ground);
        image->colours[1] = gui_colour(GuiColour::Text);
        gui_draw_image(event.canvas, *image, left + static_cast<int>(plot.picture.place.x),
                       top + static_cast<int>(plot.picture.place.y), 1, 1);
    }
    gui_draw_rectangle(event.canvas,
                       {left + static_cast<int>(plot_frame.x), top + static_cast<int>(plot_frame.y),
                        static_cast<int>(plot_frame_size.x), static_cast<int>(plot_frame_size.y)},
                       gui_colour(GuiColour::Text));
    for (const PlotText &text : plot.texts)
        draw_text(event.canvas, text, left, top);
}

long create_plot_window(Window *window) {
    constexpr int step = 16;
    const PlotState &plot = *plot_state(window);
    const std::string &name = plot.source->product->label_state->file_name;
    gui_set_title(window, "Lumacart - Plot - " + shown_name(name, longest_title_name));
    enable_known_commands(window, CommandDispatcher::Label);
    gui_set_content_size(window, content, step);
    gui_set_client_size(window, content);
    return 0;
}

long plot_window_eh(Window *window, const Event &event) {
    switch (event.type) {
        case EventType::Create:
            return create_plot_window(window);
        case EventType::Update:
            build_plot(window, event);
            break;
        default:
            handle_common_event(window, event, CommandDispatcher::Label);
            break;
    }
    return 0;
}

}  // namespace

Window *open_plot_window(std::shared_ptr<PlotSource> source, const PlotChoice &choice, PlotAxis x, PlotAxis y) {
    auto plot = std::make_unique<PlotState>();
    plot->choice = choice;
    plot->texts = plot_texts(x, y);
    const bool drawn = with_memory([&] { plot->picture = plot_picture(plot_line(x, y)); });
    if (!drawn || !plot->picture.image) {
        table_error("Table Plot - insufficient memory");
        return nullptr;
    }
    auto state = std::make_unique<GenericState>();
    state->kind = DocumentKind::Listing;
    state->directory = source->product->directory;
    plot->source = std::move(source);
    state->module = std::move(plot);
    return open_document_window(plot_window_resource, plot_window_eh, std::move(state));
}

void show_detailed_plot(Window *window) {
    const PlotState *plot = plot_state(window);
    if (!plot)
        return;
    const std::shared_ptr<PlotSource> source = plot->source;
    open_detailed_plot(*source, plot->choice);
}
