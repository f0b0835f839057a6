// The multi-line text control: lines of bytes shown as text and given back unchanged. Private to the folder.
#pragma once

#include <QPlainTextEdit>

#include <string>
#include <vector>

// One row (block) of the document shows one paragraph, or a part of a very long one: laying out a row takes time in
// proportion to its length or worse. A row that contains ROW_CONTINUES goes on in the next one.
//
// The bytes that end a line stand beside the row, in its user state, where no cursor reaches them. Other bytes that are
// not text, or that the document would change, are shown as characters of a private range; characters of the file that
// are in that range are taken for bytes that are not text, so that all bytes come back as they were.
class TextControl final : public QPlainTextEdit {
  public:
    explicit TextControl(QWidget *parent);

    // Ties a menu item to what its property `edit` names.
    void connect_edit_item(QAction *item);

    size_t paragraph_count() const;
    std::vector<std::string> paragraphs() const;
    std::string paragraph(size_t number) const;
    void set_paragraphs(const std::vector<std::string> &texts);
    void append_paragraphs(const std::vector<std::string> &texts);
    void set_paragraph(size_t number, const std::string &text);
    void show_paragraph(size_t number);
    size_t first_paragraph_shown() const;
    int width_for(int columns) const;  // that lines of this length need, with the scroll bar

  protected:
    void changeEvent(QEvent *event) override;
    QMimeData *createMimeDataFromSelection() const override;
    bool canInsertFromMimeData(const QMimeData *source) const override;
    void insertFromMimeData(const QMimeData *source) override;

  private:
    bool is_blank() const;
    QTextBlock first_row(size_t number) const;
    QTextBlock end_of_paragraph(QTextBlock row, std::string *text) const;
    QString rows_of(const std::vector<std::string> &texts, std::vector<int> *ends);
    void set_ends(QTextBlock row, const std::vector<int> &ends);

    bool has_long_paragraphs_ = false;  // else the number of a paragraph is that of its row
};
