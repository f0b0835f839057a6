#include "gui/long_text.h"

namespace {

constexpr qsizetype MAX_CHARACTERS = 4000;
constexpr int MAX_ROWS = 30;
constexpr int ROW = 80;  // characters, roughly what a box shows before it wraps
constexpr QChar BREAK_HERE(0x200b);

}  // namespace

LongText fit_text(const QString &text) {
    LongText fitted;
    int rows = 1, column = 0, word = 0;
    for (const QChar character : text) {
        if (rows > MAX_ROWS || fitted.text.size() >= MAX_CHARACTERS) {
            fitted.cut = true;
            fitted.text += QChar(0x2026);
            break;
        }
        word = character.isSpace() ? 0 : word + 1;
        if (word > ROW && !character.isLowSurrogate()) {
            fitted.text += BREAK_HERE;
            word = 1;
        }
        ++column;
        if (character == QLatin1Char('\n') || column > ROW) {
            ++rows;
            column = 0;
        }
        fitted.text += character;
    }
    return fitted;
}
