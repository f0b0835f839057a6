#include "gui/text_control.h"

#include "gui/gui.h"
#include "gui/text_bytes.h"
#include "gui/window.h"

#include <QAction>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QMimeData>
#include <QScrollBar>
#include <QTextBlock>

#include <algorithm>
#include <array>
#include <string_view>

namespace {

constexpr qsizetype LONGEST_ROW = 2000;  // characters
constexpr int TAB_COLUMNS = 8;

// The user state of a row is the place of its line end here; -1, Qt's own, for none.
constexpr std::array<std::string_view, 4> LINE_ENDS = {"\r\n", "\n\r", "\n", "\r"};

struct EditItem {
    const char *name;
    void (QPlainTextEdit::*run)();
    void (QPlainTextEdit::*available)(bool);  // null: always
};
constexpr EditItem EDIT_ITEMS[] = {
    {"undo", &QPlainTextEdit::undo, &QPlainTextEdit::undoAvailable},
    {"redo", &QPlainTextEdit::redo, &QPlainTextEdit::redoAvailable},
    {"cut", &QPlainTextEdit::cut, &QPlainTextEdit::copyAvailable},
    {"copy", &QPlainTextEdit::copy, &QPlainTextEdit::copyAvailable},
    {"paste", &QPlainTextEdit::paste, nullptr},
    {"selectAll", &QPlainTextEdit::selectAll, nullptr},
};

int end_of(std::string_view text) {
    for (size_t i = 0; i < LINE_ENDS.size(); ++i) {
        if (text.ends_with(LINE_ENDS[i]))
            return static_cast<int>(i);
    }
    return -1;
}

std::string_view end_bytes(int state) {
    return state >= 0 && state < static_cast<int>(LINE_ENDS.size()) ? LINE_ENDS[static_cast<size_t>(state)] : "";
}

bool continues(const QTextBlock &row) {
    return row.text().contains(ROW_CONTINUES) && row.next().isValid();
}

// Breaks a paragraph's text into rows; returns how many.
int append_rows(const QString &text, QString *rows) {
    int count = 1;
    qsizetype start = 0;
    while (text.size() - start > LONGEST_ROW) {
        qsizetype end = start + LONGEST_ROW;
        if (text[end].isLowSurrogate())
            --end;
        *rows += QStringView(text).mid(start, end - start);
        *rows += ROW_CONTINUES;
        *rows += QLatin1Char('\n');
        start = end;
        ++count;
    }
    *rows += QStringView(text).mid(start);
    return count;
}

TextControl *find_text(const Window *window, int number) {
    const auto found = window->controls.find(number);
    return found == window->controls.end() ? nullptr : dynamic_cast<TextControl *>(found->second);
}

}  // namespace

TextControl::TextControl(QWidget *parent) : QPlainTextEdit(parent) {
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setLineWrapMode(QPlainTextEdit::NoWrap);
}

void TextControl::changeEvent(QEvent *event) {
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        setTabStopDistance(TAB_COLUMNS * QFontMetricsF(font()).horizontalAdvance(QLatin1Char(' ')));
}

// --- Edit menu ------------------------------------------------------------------------------------------------------

void TextControl::connect_edit_item(QAction *item) {
    const QString name = item->property("edit").toString();
    for (const EditItem &row : EDIT_ITEMS) {
        if (name != QLatin1String(row.name))
            continue;
        connect(item, &QAction::triggered, this, row.run);
        if (!row.available)
            continue;
        item->setEnabled(false);
        connect(this, row.available, item, &QAction::setEnabled);
    }
}

// --- Paragraphs -----------------------------------------------------------------------------------------------------

bool TextControl::is_blank() const {
    return blockCount() == 1 && document()->firstBlock().length() <= 1 && document()->firstBlock().userState() < 0;
}

QTextBlock TextControl::first_row(size_t number) const {
    if (!has_long_paragraphs_)
        return number < static_cast<size_t>(blockCount()) ? document()->findBlockByNumber(static_cast<int>(number))
                                                          : QTextBlock();
    QTextBlock row = document()->firstBlock();
    for (; row.isValid() && number > 0; --number)
        row = end_of_paragraph(row, nullptr).next();
    return row;
}

// The last row of the paragraph that starts with `row`; its bytes are stored in `text` where that is given.
QTextBlock TextControl::end_of_paragraph(QTextBlock row, std::string *text) const {
    for (;; row = row.next()) {
        if (text)
            *text += bytes_from_text(row.text());
        if (!has_long_paragraphs_ || !continues(row))
            break;
    }
    if (text)
        *text += end_bytes(row.userState());
    return row;
}

size_t TextControl::paragraph_count() const {
    if (is_blank())
        return 0;
    if (!has_long_paragraphs_)
        return static_cast<size_t>(blockCount());
    size_t count = 0;
    for (QTextBlock row = document()->firstBlock(); row.isValid(); row = end_of_paragraph(row, nullptr).next())
        ++count;
    return count;
}

std::vector<std::string> TextControl::paragraphs() const {
    std::vector<std::string> texts;
    if (is_blank())
        return texts;
    texts.reserve(static_cast<size_t>(blockCount()));
    for (QTextBlock row = document()->firstBlock(); row.isValid(); row = row.next())
        row = end_of_paragraph(row, &texts.emplace_back());
    return texts;
}

std::string TextControl::paragraph(size_t number) const {
    std::string text;
    const QTextBlock row = first_row(number);
    if (row.isValid())
        end_of_paragraph(row, &text);
    return text;
}

// The rows of the paragraphs, and the user state of each row.
QString TextControl::rows_of(const std::vector<std::string> &texts, std::vector<int> *ends) {
    size_t bytes = 0;
    for (const std::string &text : texts)
        bytes += text.size() + 1;
    QString rows;
    rows.reserve(static_cast<qsizetype>(bytes));
    for (const std::string &text : texts) {
        if (!ends->empty())
            rows += QLatin1Char('\n');
        const int end = end_of(text);
        const std::string_view shown = std::string_view(text).substr(0, text.size() - end_bytes(end).size());
        const int count = append_rows(text_from_bytes(shown), &rows);
        has_long_paragraphs_ = has_long_paragraphs_ || count > 1;
        ends->insert(ends->end(), static_cast<size_t>(count - 1), -1);
        ends->push_back(end);
    }
    return rows;
}

void TextControl::set_ends(QTextBlock row, const std::vector<int> &ends) {
    for (size_t i = 0; i < ends.size() && row.isValid(); ++i, row = row.next())
        row.setUserState(ends[i]);
}

void TextControl::set_paragraphs(const std::vector<std::string> &texts) {
    has_long_paragraphs_ = false;
    std::vector<int> ends;
    const QString rows = rows_of(texts, &ends);
    setPlainText(rows);
    document()->firstBlock().setUserState(-1);
    set_ends(document()->firstBlock(), ends);
    document()->setModified(false);
    emit modificationChanged(false);  // a text that became empty counts as changed and is cleared without a word
}

void TextControl::append_paragraphs(const std::vector<std::string> &texts) {
    if (texts.empty())
        return;
    std::vector<int> ends;
    const bool was_blank = is_blank();
    const QString rows = rows_of(texts, &ends);
    const int first = was_blank ? 0 : blockCount();
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(was_blank ? rows : QLatin1Char('\n') + rows);
    set_ends(document()->findBlockByNumber(first), ends);
}

void TextControl::set_paragraph(size_t number, const std::string &text) {
    const QTextBlock first = first_row(number);
    if (!first.isValid())
        return;
    const int row = first.blockNumber();
    const QTextBlock last = end_of_paragraph(first, nullptr);
    std::vector<int> ends;
    const QString rows = rows_of({text}, &ends);
    QTextCursor cursor(first);
    cursor.setPosition(last.position() + last.length() - 1, QTextCursor::KeepAnchor);
    cursor.insertText(rows);
    set_ends(document()->findBlockByNumber(row), ends);
}

void TextControl::show_paragraph(size_t number) {
    const QTextBlock row = first_row(number);
    if (!row.isValid())
        return;
    setTextCursor(QTextCursor(row));
    // The row at the top, as far as the text reaches.
    verticalScrollBar()->setValue(row.firstLineNumber());
}

size_t TextControl::first_paragraph_shown() const {
    const int shown = firstVisibleBlock().blockNumber();
    if (!has_long_paragraphs_)
        return static_cast<size_t>(std::max(shown, 0));
    size_t number = 0;
    for (QTextBlock row = end_of_paragraph(document()->firstBlock(), nullptr);
         row.isValid() && row.blockNumber() < shown; row = end_of_paragraph(row.next(), nullptr))
        ++number;
    return number;
}

// --- Clipboard ------------------------------------------------------------------------------------------------------

// Qt's own turns blanks that do not break into ordinary ones.
QMimeData *TextControl::createMimeDataFromSelection() const {
    auto *copied = new QMimeData;
    QString text = textCursor().selectedText();
    text.remove(QString(ROW_CONTINUES) + QChar::ParagraphSeparator);
    text.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
    copied->setText(text);
    return copied;
}

// Dropped files are for the window to open.
bool TextControl::canInsertFromMimeData(const QMimeData *source) const {
    return source->hasText() && !source->hasUrls();
}

void TextControl::insertFromMimeData(const QMimeData *source) {
    if (isReadOnly() || !canInsertFromMimeData(source))
        return;
    QString text = source->text();
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    QString rows;
    bool is_first = true;
    for (const QString &line : text.split(QLatin1Char('\n'))) {
        if (!is_first)
            rows += QLatin1Char('\n');
        is_first = false;
        // Through bytes, so that what a document would change becomes what it keeps.
        const int count = append_rows(text_from_bytes(bytes_from_text(line)), &rows);
        has_long_paragraphs_ = has_long_paragraphs_ || count > 1;
    }
    textCursor().insertText(rows);
    ensureCursorVisible();
}

int TextControl::width_for(int columns) const {
    const qreal line = columns * QFontMetricsF(font()).horizontalAdvance(QLatin1Char('0'));
    return qCeil(line + 2 * document()->documentMargin()) + 2 * frameWidth() + cursorWidth() +
           verticalScrollBar()->sizeHint().width();
}

// --- By number ------------------------------------------------------------------------------------------------------

size_t gui_paragraph_count(const Window *window, int control) {
    const TextControl *text = find_text(window, control);
    return text ? text->paragraph_count() : 0;
}

std::vector<std::string> gui_paragraphs(const Window *window, int control) {
    const TextControl *text = find_text(window, control);
    return text ? text->paragraphs() : std::vector<std::string>();
}

std::string gui_paragraph(const Window *window, int control, size_t paragraph) {
    const TextControl *text = find_text(window, control);
    return text ? text->paragraph(paragraph) : std::string();
}

void gui_set_paragraphs(Window *window, int control, const std::vector<std::string> &texts) {
    if (TextControl *text = find_text(window, control))
        text->set_paragraphs(texts);
}

void gui_append_paragraphs(Window *window, int control, const std::vector<std::string> &texts) {
    if (TextControl *text = find_text(window, control))
        text->append_paragraphs(texts);
}

void gui_set_paragraph(Window *window, int control, size_t paragraph, const std::string &bytes) {
    if (TextControl *text = find_text(window, control))
        text->set_paragraph(paragraph, bytes);
}

int gui_columns_width(const Window *window, int control, int columns) {
    const TextControl *text = find_text(window, control);
    return text ? text->width_for(columns) : 0;
}

void gui_show_paragraph(Window *window, int control, size_t paragraph) {
    if (TextControl *text = find_text(window, control))
        text->show_paragraph(paragraph);
}

size_t gui_first_paragraph_shown(const Window *window, int control) {
    const TextControl *text = find_text(window, control);
    return text ? text->first_paragraph_shown() : 0;
}

bool gui_has_paragraphs(const Window *window, int control) {
    return find_text(window, control) != nullptr;
}

bool gui_text_changed(const Window *window, int control) {
    const TextControl *text = find_text(window, control);
    return text && text->document()->isModified();
}

void gui_set_text_changed(Window *window, int control, bool changed) {
    if (TextControl *text = find_text(window, control))
        text->document()->setModified(changed);
}
