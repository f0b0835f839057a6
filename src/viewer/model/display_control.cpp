#include "viewer/model/display_control.h"

#include <algorithm>

bool bars_at_rest(const DisplayControl &control) {
    return control.lbarh == 0 && control.rbarh == 255 && control.mbarh == control.maxpix;
}

int bar_position(const DisplayControl &control, DisplayBar bar) {
    return bar == DisplayBar::Black ? control.lbarh : bar == DisplayBar::White ? control.rbarh : control.mbarh;
}

bool move_bar(DisplayControl *control, DisplayBar bar, int position) {
    const int lowest = bar == DisplayBar::White ? control->lbarh + 1 : 0;
    const int highest = bar == DisplayBar::Black ? control->rbarh - 1 : 255;
    const auto reached = static_cast<int16_t>(std::clamp(position, lowest, std::max(lowest, highest)));
    int16_t &moved = bar == DisplayBar::Black   ? control->lbarh
                     : bar == DisplayBar::White ? control->rbarh
                                                : control->mbarh;
    if (moved == reached)
        return false;
    moved = reached;
    return true;
}

std::array<uint8_t, 256> control_levels(const DisplayControl &control) {
    const int width = control.rbarh == control.lbarh ? 1 : control.rbarh - control.lbarh;
    const float gain = 255.0F / static_cast<float>(width);
    std::array<uint8_t, 256> levels = {};
    for (int i = 0; i < 256; ++i) {
        const float v = static_cast<float>(control.mbarh - control.maxpix - control.lbarh + i) * gain + 0.5F;
        const float plain = std::clamp(v, 0.0F, 255.0F);
        levels[static_cast<size_t>(i)] = static_cast<uint8_t>(control.inverted ? 255 - plain : plain);
    }
    return levels;
}

ColourTable control_colours(const DisplayControl &control, const ColourTable &palette) {
    const std::array<uint8_t, 256> levels = control_levels(control);
    ColourTable colours;
    for (size_t i = 0; i < colours.size(); ++i)
        colours[i] = palette[levels[i]];
    return colours;
}

ColourTable inverted_colours(const ColourTable &palette) {
    ColourTable colours = palette;
    std::reverse(colours.begin(), colours.end());
    return colours;
}
