#include "gui/input.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

namespace {

struct KeyRow {
    int toolkit;
    GuiKey key;
};
constexpr KeyRow KEYS[] = {
    {Qt::Key_Left, GuiKey::Left},   {Qt::Key_Right, GuiKey::Right},   {Qt::Key_Up, GuiKey::Up},
    {Qt::Key_Down, GuiKey::Down},   {Qt::Key_PageUp, GuiKey::PageUp}, {Qt::Key_PageDown, GuiKey::PageDown},
    {Qt::Key_Home, GuiKey::Home},   {Qt::Key_End, GuiKey::End},       {Qt::Key_Return, GuiKey::Enter},
    {Qt::Key_Enter, GuiKey::Enter}, {Qt::Key_Escape, GuiKey::Escape}, {Qt::Key_Delete, GuiKey::Delete},
    {Qt::Key_Tab, GuiKey::Tab},     {Qt::Key_Backtab, GuiKey::Tab},
};

unsigned modifiers_of(Qt::KeyboardModifiers modifiers) {
    return (modifiers & Qt::ShiftModifier ? GUI_SHIFT : 0u) | (modifiers & Qt::ControlModifier ? GUI_CONTROL : 0u) |
           (modifiers & Qt::AltModifier ? GUI_ALT : 0u);
}

int button_of(Qt::MouseButton button) {
    switch (button) {
        case Qt::LeftButton:
            return 1;
        case Qt::MiddleButton:
            return 2;
        case Qt::RightButton:
            return 3;
        default:
            return 0;
    }
}

// What the key writes; with Control, whose text is a control character, the letter on it. 0 for a key that writes
// nothing.
char32_t character_of(const QKeyEvent &event) {
    const QList<uint> text = event.text().toUcs4();
    if (text.size() == 1 && text[0] >= ' ' && text[0] != 127)
        return text[0];
    if (event.key() >= Qt::Key_Space && event.key() <= Qt::Key_AsciiTilde)
        return static_cast<char32_t>(QChar::toLower(static_cast<uint>(event.key())));
    return 0;
}

}  // namespace

Event mouse_event(EventType type, const QMouseEvent &source) {
    Event event;
    event.type = type;
    event.position = {source.position().x(), source.position().y()};
    event.button = button_of(source.button());
    event.modifiers = modifiers_of(source.modifiers());
    return event;
}

Event wheel_event(const QWheelEvent &source, int steps) {
    Event event;
    event.type = EventType::Wheel;
    event.position = {source.position().x(), source.position().y()};
    event.modifiers = modifiers_of(source.modifiers());
    event.wheel_steps = steps;
    return event;
}

bool is_modifier_key(const QKeyEvent &event) {
    switch (event.key()) {
        case Qt::Key_Shift:
        case Qt::Key_Control:
        case Qt::Key_Alt:
        case Qt::Key_AltGr:
        case Qt::Key_Meta:
        case Qt::Key_CapsLock:
            return true;
        default:
            return false;
    }
}

Event key_event(const QKeyEvent &source) {
    Event event;
    event.type = EventType::Key;
    event.modifiers = modifiers_of(source.modifiers());
    for (const KeyRow &row : KEYS) {
        if (row.toolkit == source.key()) {
            event.key = row.key;
            return event;
        }
    }
    event.character = character_of(source);
    event.key = event.character ? GuiKey::Character : GuiKey::Other;
    return event;
}
